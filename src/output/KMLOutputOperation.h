#pragma once

#include "PlacemarkOutputOperation.h"

// The list as a KML 2.2 document: a placemark per item with a position, in list order, with the
// item's name, its location fields as the description and the time it was taken.
class KMLOutputOperation : public PlacemarkOutputOperation
{
public:
    using PlacemarkOutputOperation::PlacemarkOutputOperation;

    void main() override;
};
