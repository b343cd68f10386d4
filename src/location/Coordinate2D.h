#pragma once

// A position in signed decimal degrees, north and east positive. Carries no range check: callers
// decide what is valid.
struct Coordinate2D
{
    double latitude = 0.0;
    double longitude = 0.0;

    friend bool operator==(const Coordinate2D &, const Coordinate2D &) = default;
};
