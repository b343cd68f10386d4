#pragma once

#include <QStringView>

// Orders version texts as people read them: "1.10" is newer than "1.9", "1.0" equals "1", and a
// pre-release ("1.0b2", "2.0-rc1") is older than its release. Numbers compare by value, letters
// case-insensitively, and any run of other characters only separates the parts.
class VersionComparator
{
public:
    // Negative when a is older than b, 0 when equal, positive when a is newer.
    static int compareVersions(QStringView a, QStringView b);
};
