#pragma once

#include "PlacemarkOutputOperation.h"

// The list as a GPX 1.1 file: a waypoint per item with a position, sorted by the time taken
// (items without one last, in list order), with the same name, description and time as KML.
class GPXOutputOperation : public PlacemarkOutputOperation
{
public:
    using PlacemarkOutputOperation::PlacemarkOutputOperation;

    void main() override;
};
