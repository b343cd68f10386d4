#pragma once

#include <QDateTime>
#include <QString>

// Turns the values that are not text into text for one output format.
class MetadataItemFormatterType
{
public:
    virtual ~MetadataItemFormatterType() = default;
    virtual QString formatDate(const QDateTime &date, const QString &columnName) const = 0;
    virtual QString formatNullValue(const QString &columnName) const = 0;
    virtual QString formatBoolValue(bool value, const QString &columnName) const = 0;
    virtual QString formatNumber(qint64 number, const QString &columnName) const = 0;
};
