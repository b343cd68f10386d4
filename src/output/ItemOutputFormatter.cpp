#include "ItemOutputFormatter.h"

#include "session/Node.h"

ItemOutputFormatter::ItemOutputFormatter(const DataModelSnapshot &dataModelSnapshot)
    : ItemOutputFormatter(dataModelSnapshot, dataModelSnapshot.dateFormatMode,
                          FixedPatternLocale::System)
{ }

ItemOutputFormatter::ItemOutputFormatter(const DataModelSnapshot &dataModelSnapshot,
                                         int dateFormatMode, FixedPatternLocale fixedPatternLocale)
    : dataModelSnapshot(dataModelSnapshot)
{
    switch (dateFormatMode) {
    case 0:
        m_datePattern = QStringLiteral("yyyy-MM-dd");
        break;
    case 1:
        m_datePattern = QStringLiteral("yyyy-MM-dd HH:mm:ss");
        break;
    case 2:
        m_datePattern = QStringLiteral("yyyy-MM-dd hh:mm:ss AP");
        break;
    default:
        return;
    }
    // "us" names no language, so the 12-hour pattern gets the neutral AM and PM.
    if (dateFormatMode == 2)
        m_dateLocale = QLocale(QStringLiteral("us"));
    else if (fixedPatternLocale == FixedPatternLocale::German)
        m_dateLocale = QLocale(QStringLiteral("de"));
}

QString ItemOutputFormatter::formatDate(const QDateTime &date, const QString &) const
{
    if (m_datePattern.isEmpty())
        return Node::formatDisplayDate(date);
    return m_dateLocale.toString(date.toTimeZone(m_timeZone), m_datePattern);
}

QString ItemOutputFormatter::formatNullValue(const QString &) const
{
    switch (dataModelSnapshot.nullValuesMode) {
    case 1:
        return QStringLiteral("Null");
    case 2:
        return QStringLiteral("nil");
    case 3:
        return QStringLiteral("nul");
    case 4:
        return QStringLiteral("none");
    default:
        return QString();
    }
}

QString ItemOutputFormatter::formatBoolValue(bool value, const QString &) const
{
    switch (dataModelSnapshot.boolValuesMode) {
    case 1:
        return value ? QStringLiteral("yes") : QStringLiteral("no");
    case 2:
        return value ? QStringLiteral("TRUE") : QStringLiteral("FALSE");
    case 3:
        return value ? QStringLiteral("YES") : QStringLiteral("NO");
    case 4:
        return value ? QStringLiteral("1") : QStringLiteral("0");
    default:
        return value ? QStringLiteral("true") : QStringLiteral("false");
    }
}

QString ItemOutputFormatter::formatNumber(qint64 number, const QString &) const
{
    return QString::number(number);
}
