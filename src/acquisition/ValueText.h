#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

// Text forms shared by the platform readers, so that numbers, lists and dates read the same
// whichever library supplied them.
namespace ValueText {

// The items joined by ", ".
QString asCommaSeparatedString(const QStringList &items);

// The shortest decimal text that reads back as the same number: 72 for 72.0, 0.008, -12.5.
QString numberDescription(double value);
QString numberDescription(qint64 value);

// At most one fraction digit, and none when it would be 0: 2.25 gives "2.2", 3.0 gives "3".
QString singleDigitNumber(double value);

// A date as "2024-05-01 10:34:56 +0000", always in UTC.
QString dateDescription(const QDateTime &date);

// Seconds as translated days, hours and minutes ("1 day, 3 hours, 1 minute"); under a
// minute, seconds ("42 seconds"). Parts are truncated, never rounded up.
QString formatAsDaysAndHoursAndMinutes(double seconds);

// The moment before every other, for dates that are absent.
QDateTime distantPast();

} // namespace ValueText
