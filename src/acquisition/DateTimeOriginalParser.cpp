#include "DateTimeOriginalParser.h"

#include <QRegularExpression>

#include <charconv>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

// "0." followed by digits, read in the C locale with nothing left over.
std::optional<double> fractionFromDigits(QStringView digits)
{
    const QByteArray text = "0." + digits.toUtf8();
    double value = 0;
    const char *end = text.constData() + text.size();
    const auto [stop, error] = std::from_chars(text.constData(), end, value);
    if (error != std::errc() || stop != end)
        return std::nullopt;
    return value;
}

QDateTime plusSeconds(const QDateTime &instant, double seconds)
{
    return instant.addMSecs(qint64(std::llround(seconds * 1000.0)));
}

// A whole text in one of the fixed formats, in zone.
std::optional<QDateTime> readFormat(const QString &text, const QString &format,
                                    const QTimeZone &zone)
{
    const QDateTime read = QDateTime::fromString(text, format);
    if (!read.isValid())
        return std::nullopt;
    const QDateTime instant(read.date(), read.time(), zone);
    if (!instant.isValid())
        return std::nullopt;
    return instant;
}

// A whole text in format followed by a zone offset: "+02:00", "+0200", "+02" or "Z".
std::optional<QDateTime> readFormatWithZone(const QString &text, const QString &format)
{
    static const QRegularExpression offset(u"^(.*?)(?:(Z)|([+-])(\\d{2})(?::?(\\d{2}))?)$"_s);
    const QRegularExpressionMatch match = offset.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    int offsetSeconds = 0;
    if (match.captured(2).isEmpty()) {
        offsetSeconds = match.captured(4).toInt() * 3600 + match.captured(5).toInt() * 60;
        if (match.captured(3) == u"-")
            offsetSeconds = -offsetSeconds;
    }
    return readFormat(match.captured(1), format, QTimeZone(offsetSeconds));
}

} // namespace

DateTimeOriginalParser &DateTimeOriginalParser::sharedInstance()
{
    static DateTimeOriginalParser instance;
    return instance;
}

DateTimeOriginalParser::DateTimeOriginalParser()
    : m_localZone(QTimeZone::systemTimeZone())
{ }

std::optional<QDateTime> DateTimeOriginalParser::parseWithoutFractionalSeconds(
    const QString &text) const
{
    if (auto instant = readFormat(text, u"yyyy:MM:dd HH:mm:ss"_s, m_localZone))
        return instant;
    if (auto instant = readFormat(text, u"yyyy:MM:dd HH:mm"_s, m_localZone))
        return instant;
    if (auto instant = readFormat(text, u"yyyy-MM-dd HH:mm:ss"_s, m_localZone))
        return instant;
    if (auto instant = readFormatWithZone(text, u"yyyy:MM:dd HH:mm:ss"_s))
        return instant;
    return readFormatWithZone(text, u"yyyy-MM-dd HH:mm:ss"_s);
}

std::optional<QDateTime> DateTimeOriginalParser::parseISO8601(QStringView string) const
{
    QString text = string.toString();
    // A lower-case "t" only triggers the replacement; left in place, it makes the text
    // unreadable.
    if (text.contains(u'T') || text.contains(u't'))
        text.replace(u'T', u' ');
    // The "Z" of UTC is dropped, not honoured: the time is then read in the local zone.
    if (text.endsWith(u'Z') || text.endsWith(u'z'))
        text.chop(1);

    double fraction = 0;
    // The search starts at the sixteenth character, behind the date and the hour and minute.
    constexpr qsizetype fractionSearchStart = 15;
    if (text.size() >= 16) {
        const qsizetype dot = text.indexOf(u'.', fractionSearchStart);
        if (dot >= 0) {
            qsizetype end = dot + 1;
            while (end < text.size() && text[end] != u'+' && text[end] != u'-')
                ++end;
            fraction = fractionFromDigits(QStringView(text).sliced(dot + 1, end - dot - 1))
                           .value_or(0.0);
            text.remove(dot, end - dot);
        }
    }

    const std::optional<QDateTime> instant = parseWithoutFractionalSeconds(text);
    if (!instant)
        return std::nullopt;
    if (fraction > 0)
        return plusSeconds(*instant, fraction);
    return instant;
}

QDateTime DateTimeOriginalParser::add(QStringView subSecondString, const QDateTime &instant) const
{
    if (const std::optional<double> fraction = fractionFromDigits(subSecondString))
        return plusSeconds(instant, *fraction);
    return instant;
}
