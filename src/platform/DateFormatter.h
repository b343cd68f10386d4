#pragma once

#include <QDateTime>
#include <QString>

// Dates in the user's own words: the locale's medium date and short time ("Jan 5, 2024, 3:04 PM"
// in American English, "05.01.2024, 15:04" in German), in the local time zone. Any thread.
namespace DateFormatter {

QString mediumDateShortTime(const QDateTime &date);

} // namespace DateFormatter
