#pragma once

#include <QString>

// A named location that can be applied to items; pins last as long as the run.
struct Pin
{
    QString name;
    double latitude = 0;
    double longitude = 0;
    QString sublocation;
    QString city;
    QString region;
    QString country;

    bool operator==(const Pin &) const = default;
};
