#pragma once

#include "MetadataItemFormatterType.h"
#include "session/OutputTypes.h"

#include <QLocale>
#include <QString>
#include <QTimeZone>

// The value rules shared by the text formats (tab-separated, spreadsheet, HTML) and by the map
// pass: booleans and empty values by their modes, dates by dateFormatMode, numbers in decimal.
class ItemOutputFormatter : public MetadataItemFormatterType
{
public:
    explicit ItemOutputFormatter(const DataModelSnapshot &dataModelSnapshot);

    QString formatDate(const QDateTime &date, const QString &columnName) const override;
    QString formatNullValue(const QString &columnName) const override;
    QString formatBoolValue(bool value, const QString &columnName) const override;
    QString formatNumber(qint64 number, const QString &columnName) const override;

    const DataModelSnapshot dataModelSnapshot;

protected:
    // Which locale the fixed date patterns other than the 12-hour one are written in.
    enum class FixedPatternLocale { System, German };
    ItemOutputFormatter(const DataModelSnapshot &dataModelSnapshot, int dateFormatMode,
                        FixedPatternLocale fixedPatternLocale);

private:
    // Empty for the modes that fall back to medium date and short time styles.
    QString m_datePattern;
    QLocale m_dateLocale;
    // The system's zone, taken once: converting to local time asks the C library, which looks
    // at the zone file again for every date.
    QTimeZone m_timeZone = QTimeZone::systemTimeZone();
};
