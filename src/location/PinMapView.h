#pragma once

#include "location/Geocoder.h"

// What the pin workflow needs of the map: to show a region and to select a pin's marker. The
// map view implements it.
class PinMapView
{
public:
    virtual ~PinMapView() = default;
    virtual void setRegion(const CoordinateRegion &region, bool animated) = 0;
    // The marker of the pin at this index in the model's pins.
    virtual void selectPinMarker(int pinIndex, bool animated) = 0;
};
