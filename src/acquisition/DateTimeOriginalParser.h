#pragma once

#include <QDateTime>
#include <QString>
#include <QStringView>
#include <QTimeZone>

#include <optional>

// Turns the date texts ExifTool writes into instants: colons or dashes in the date, with or
// without seconds, zone and fraction. The local zone is the one in force when the parser was
// made. Instants carry milliseconds, so finer fractions are rounded to the millisecond.
class DateTimeOriginalParser
{
public:
    static DateTimeOriginalParser &sharedInstance();

    DateTimeOriginalParser();

    std::optional<QDateTime> parseISO8601(QStringView string) const;
    // Adds a sub-second text ("25" is a quarter second) to instant; unreadable text adds nothing.
    QDateTime add(QStringView subSecondString, const QDateTime &instant) const;

private:
    std::optional<QDateTime> parseWithoutFractionalSeconds(const QString &text) const;

    const QTimeZone m_localZone;
};
