#pragma once

#include "location/Coordinate2D.h"

#include <QString>

// One place answered by the geocoder. Absent parts are empty texts.
struct Placemark
{
    QString name;
    QString subLocality;
    QString locality;
    QString administrativeArea;
    QString country;
    QString isoCountryCode;
    Coordinate2D coordinate;
};
