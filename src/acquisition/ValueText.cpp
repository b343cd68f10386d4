#include "ValueText.h"

#include <QCoreApplication>
#include <QLocale>
#include <QTimeZone>

#include <charconv>
#include <cmath>
#include <string>

namespace ValueText {

QString asCommaSeparatedString(const QStringList &items)
{
    return items.join(QStringLiteral(", "));
}

QString numberDescription(double value)
{
    if (std::isnan(value))
        return QStringLiteral("nan");
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return QString::fromLatin1(buffer, int(result.ptr - buffer));
}

QString numberDescription(qint64 value)
{
    return QString::number(value);
}

QString singleDigitNumber(double value)
{
    if (!std::isfinite(value))
        return numberDescription(value);
    // Rounds the shortest decimal text of the number, half to even, as a number formatter
    // does: 1.25 gives 1.2 and 0.45 gives 0.4, whatever their binary neighbours are.
    char buffer[400];
    const auto result
        = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
    std::string text(buffer, result.ptr);
    const bool negative = !text.empty() && text.front() == '-';
    if (negative)
        text.erase(0, 1);
    const size_t point = text.find('.');
    std::string digits = point == std::string::npos ? text + '0' : text.substr(0, point + 2);
    if (point != std::string::npos) {
        digits.erase(point, 1);
        const std::string rest = text.substr(point + 2);
        const bool aboveHalf = !rest.empty()
            && (rest[0] > '5'
                || (rest[0] == '5' && rest.find_first_not_of('0', 1) != std::string::npos));
        const bool tie = !rest.empty() && rest[0] == '5'
            && rest.find_first_not_of('0', 1) == std::string::npos;
        if (aboveHalf || (tie && (digits.back() - '0') % 2 == 1)) {
            int at = int(digits.size()) - 1;
            while (at >= 0 && digits[size_t(at)] == '9')
                digits[size_t(at--)] = '0';
            if (at < 0)
                digits.insert(digits.begin(), '1');
            else
                ++digits[size_t(at)];
        }
    }
    const char fraction = digits.back();
    digits.pop_back();
    QLocale locale;
    QString number = QString::fromLatin1(digits.data(), qsizetype(digits.size()));
    if (fraction != '0')
        number += locale.decimalPoint() + QLatin1Char(fraction);
    if (negative && number != QLatin1String("0"))
        number.prepend(locale.negativeSign());
    return number;
}

QString dateDescription(const QDateTime &date)
{
    return date.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) + QStringLiteral(" +0000");
}

namespace {

QString countedUnit(qint64 count, const char *one, const char *many)
{
    if (count == 1)
        return QCoreApplication::translate("ValueText", one);
    return QString::asprintf(qPrintable(QCoreApplication::translate("ValueText", many)),
                             int(count));
}

} // namespace

QString formatAsDaysAndHoursAndMinutes(double seconds)
{
    const qint64 total = std::isfinite(seconds) && seconds > 0 ? qint64(seconds) : 0;
    const qint64 days = total / 86400;
    const qint64 hours = total % 86400 / 3600;
    const qint64 minutes = total % 3600 / 60;
    if (days == 0 && hours == 0 && minutes == 0)
        return countedUnit(total, QT_TRANSLATE_NOOP("ValueText", "1 second"),
                           QT_TRANSLATE_NOOP("ValueText", "%d seconds"));

    QStringList parts;
    if (days > 0)
        parts << countedUnit(days, QT_TRANSLATE_NOOP("ValueText", "1 day"),
                             QT_TRANSLATE_NOOP("ValueText", "%d days"));
    if (hours > 0)
        parts << countedUnit(hours, QT_TRANSLATE_NOOP("ValueText", "1 hour"),
                             QT_TRANSLATE_NOOP("ValueText", "%d hours"));
    if (minutes > 0)
        parts << countedUnit(minutes, QT_TRANSLATE_NOOP("ValueText", "1 minute"),
                             QT_TRANSLATE_NOOP("ValueText", "%d minutes"));
    return asCommaSeparatedString(parts);
}

QDateTime distantPast()
{
    return QDateTime(QDate(1, 1, 1), QTime(0, 0), QTimeZone::utc());
}

} // namespace ValueText
