#include "LocationHelper.h"

#include "commons/Log.h"
#include "location/Geocoder.h"

#include <QRegularExpression>
#include <QTextBoundaryFinder>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <locale.h>

using namespace Qt::StringLiterals;

namespace {

// Blanks and tabs: the space separators of Unicode and the tab, no line breaks.
bool isBlankOrTab(QChar c)
{
    return c == u'\t' || c.category() == QChar::Separator_Space;
}

bool isWhitespaceOrNewline(QChar c)
{
    const char16_t u = c.unicode();
    if ((u >= 0x09 && u <= 0x0d) || u == 0x85)
        return true;
    const QChar::Category category = c.category();
    return category == QChar::Separator_Space || category == QChar::Separator_Line
        || category == QChar::Separator_Paragraph;
}

QString trimmedBy(const QString &text, bool (*isTrimmed)(QChar))
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isTrimmed(text.at(begin)))
        ++begin;
    while (end > begin && isTrimmed(text.at(end - 1)))
        --end;
    return text.mid(begin, end - begin);
}

// Compiled on every call, as the parsers run per keystroke on short texts. \d and \s follow
// Unicode, so a non-ASCII digit passes the pattern and then fails the numeric conversion.
QRegularExpressionMatch matchWholeText(const QString &pattern, const QString &text)
{
    const QRegularExpression expression(pattern, QRegularExpression::UseUnicodePropertiesOption);
    if (!expression.isValid())
        qFatal("LocationHelper: invalid coordinate pattern %s", qPrintable(pattern));
    return expression.match(text);
}

// "S" and "W" make the value negative; the letter is not tied to an axis.
bool isNegativeDirection(const QString &direction)
{
    const QString upper = direction.toUpper();
    return upper == u"S"_s || upper == u"W"_s;
}

locale_t cLocale()
{
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
    return locale;
}

qint64 truncatedDegrees(double coordinate)
{
    // Below -2^63 the absolute value of the degrees would not fit either.
    if (!std::isfinite(coordinate) || coordinate <= -9223372036854775808.0
        || coordinate >= 9223372036854775808.0)
        qFatal("LocationHelper: cannot format the coordinate %g", coordinate);
    return static_cast<qint64>(coordinate);
}

QString directionLetter(qint64 degrees, CoordinateAxis axis)
{
    // Decided by the truncated degrees, so a value between -1 and 0 reads as north or east.
    const bool negative = degrees <= -1;
    if (axis == CoordinateAxis::Latitude)
        return negative ? u"S"_s : u"N"_s;
    return negative ? u"W"_s : u"E"_s;
}

QString fixedText(double value, int decimals)
{
    char buffer[400];
    const auto result = std::to_chars(std::begin(buffer), std::end(buffer), value,
                                      std::chars_format::fixed, decimals);
    return QString::fromLatin1(buffer, result.ptr - buffer);
}

QString shortestText(double value)
{
    char buffer[64];
    const auto result = std::to_chars(std::begin(buffer), std::end(buffer), value);
    return QString::fromLatin1(buffer, result.ptr - buffer);
}

} // namespace

const LocationHelper &LocationHelper::shared()
{
    static const LocationHelper &instance = *new LocationHelper;
    return instance;
}

std::optional<double> LocationHelper::wholeTextDouble(QStringView text)
{
    if (text.isEmpty())
        return std::nullopt;
    switch (text.front().unicode()) {
    case 0:
    case u'\t':
    case u'\n':
    case u'\v':
    case u'\f':
    case u'\r':
    case u' ':
        return std::nullopt;
    default:
        break;
    }
    const QByteArray bytes = text.toUtf8();
    char *end = nullptr;
    const double value = strtod_l(bytes.constData(), &end, cLocale());
    // A NUL inside the text stops strtod early and so fails this test too.
    if (end != bytes.constData() + bytes.size())
        return std::nullopt;
    return value;
}

std::optional<double> LocationHelper::parseDMS(const QString &text) const
{
    const QRegularExpressionMatch match = matchWholeText(
        uR"re(^\s*([0-9]+)[° ]\s*([0-9]+)[' ]\s*([0-9]+(?:\.[0-9]+)?)"?\s*([NSEWnsew])\s*$)re"_s,
        text);
    if (!match.hasMatch())
        return std::nullopt;
    const auto degrees = wholeTextDouble(match.capturedView(1));
    const auto minutes = wholeTextDouble(match.capturedView(2));
    const auto seconds = wholeTextDouble(match.capturedView(3));
    if (!degrees || !minutes || !seconds)
        return std::nullopt;
    const double value = *degrees + *minutes / 60.0 + *seconds / 3600.0;
    return isNegativeDirection(match.captured(4)) ? -value : value;
}

std::optional<double> LocationHelper::parseDMM(const QString &text) const
{
    const QRegularExpressionMatch match = matchWholeText(
        uR"re(^\s*([0-9]+)[° ]\s*([0-9]+(?:\.[0-9]+)?)[' ]\s*([NSEWnsew])\s*$)re"_s, text);
    if (!match.hasMatch())
        return std::nullopt;
    const auto degrees = wholeTextDouble(match.capturedView(1));
    const auto minutes = wholeTextDouble(match.capturedView(2));
    if (!degrees || !minutes)
        return std::nullopt;
    const double value = *degrees + *minutes / 60.0;
    return isNegativeDirection(match.captured(3)) ? -value : value;
}

std::optional<double> LocationHelper::parseDecimalDegreesWithDirection(const QString &text) const
{
    const QRegularExpressionMatch match
        = matchWholeText(uR"re(^\s*([+-]?\d+(?:\.\d+)?)\s*([NSEWnsew])\s*$)re"_s, text);
    if (!match.hasMatch())
        return std::nullopt;
    const auto value = wholeTextDouble(match.capturedView(1));
    if (!value)
        return std::nullopt;
    // The letter alone decides the sign: "-10.5 N" is north.
    return isNegativeDirection(match.captured(2)) ? -std::abs(*value) : std::abs(*value);
}

std::optional<double> LocationHelper::parseSingleCoordinate(const QString &text) const
{
    const QString trimmed = trimmedBy(text, isBlankOrTab);
    if (auto value = parseDMS(trimmed))
        return value;
    if (auto value = parseDMM(trimmed))
        return value;
    if (auto value = parseDecimalDegreesWithDirection(trimmed))
        return value;
    return wholeTextDouble(trimmed);
}

LocationHelper::ParsedCoordinates LocationHelper::parseCoordinateString(const QString &text) const
{
    const QString trimmed = trimmedBy(text, isBlankOrTab);
    const QStringList parts = trimmed.split(u',');
    if (parts.size() == 2) {
        return {parseSingleCoordinate(trimmedBy(parts.at(0), isBlankOrTab)),
                parseSingleCoordinate(trimmedBy(parts.at(1), isBlankOrTab))};
    }
    if (parts.size() == 1)
        return {parseSingleCoordinate(trimmed), std::nullopt};
    return {};
}

LocationHelper::ParsedCoordinates LocationHelper::parseCoordinateFields(
    const QString &latitudeInput, const QString &longitudeInput) const
{
    const QString latitude = trimmedBy(latitudeInput, isWhitespaceOrNewline);
    const QString longitude = trimmedBy(longitudeInput, isWhitespaceOrNewline);

    // A whole pair pasted into either field wins over the other field.
    if (!latitude.isEmpty()) {
        const ParsedCoordinates parsed = parseCoordinateString(latitude);
        if (parsed.latitude && parsed.longitude)
            return parsed;
    }
    if (!longitude.isEmpty()) {
        const ParsedCoordinates parsed = parseCoordinateString(longitude);
        if (parsed.latitude && parsed.longitude)
            return parsed;
    }
    // A field with a comma of its own makes this three parts, which parse as nothing.
    const QString joined = (latitude.isEmpty() ? u"0"_s : latitude) + u", "_s
        + (longitude.isEmpty() ? u"0"_s : longitude);
    return parseCoordinateString(joined);
}

std::optional<Coordinate2D> LocationHelper::coordinateFromDD(const QString &latitudeString,
                                                             const QString &longitudeString) const
{
    const auto latitude = wholeTextDouble(latitudeString);
    const auto longitude = wholeTextDouble(longitudeString);
    if (!latitude || !longitude) {
        Log::line(u"Invalid latitude or longitude string.");
        return std::nullopt;
    }
    return Coordinate2D {*latitude, *longitude};
}

std::optional<Coordinate2D> LocationHelper::createCLLocationCoordinate2DFrom(
    const QString &latitude, const QString &longitude, const QString &latitudeRef,
    const QString &longitudeRef) const
{
    auto latitudeValue = wholeTextDouble(latitude);
    auto longitudeValue = wholeTextDouble(longitude);
    if (!latitudeValue || !longitudeValue)
        return std::nullopt;

    const QString latitudeWord = latitudeRef.toLower();
    if (latitudeWord == u"s"_s || latitudeWord == u"south"_s)
        latitudeValue = -*latitudeValue;
    else if (latitudeWord != u"n"_s && latitudeWord != u"north"_s)
        return std::nullopt;

    const QString longitudeWord = longitudeRef.toLower();
    if (longitudeWord == u"w"_s || longitudeWord == u"west"_s)
        longitudeValue = -*longitudeValue;
    else if (longitudeWord != u"e"_s && longitudeWord != u"east"_s)
        return std::nullopt;

    return Coordinate2D {*latitudeValue, *longitudeValue};
}

QString LocationHelper::formatToDMS(double coordinate, CoordinateAxis axis) const
{
    const qint64 degrees = truncatedDegrees(coordinate);
    const double totalMinutes = std::abs(coordinate - double(degrees)) * 60.0;
    const qint64 minutes = static_cast<qint64>(totalMinutes);
    const double seconds = (totalMinutes - double(minutes)) * 60.0;
    // No carry: 59.996 seconds print as "60.00" next to unchanged minutes.
    return QString::number(std::abs(degrees)) + u'°' + QString::number(minutes) + u'\''
        + fixedText(seconds, 2) + u'"' + directionLetter(degrees, axis);
}

QString LocationHelper::formatToDMM(double coordinate, CoordinateAxis axis) const
{
    const qint64 degrees = truncatedDegrees(coordinate);
    const double minutes = std::abs(coordinate - double(degrees)) * 60.0;
    return QString::number(std::abs(degrees)) + u'°' + fixedText(minutes, 3) + u'\''
        + directionLetter(degrees, axis);
}

QString LocationHelper::truncateDecimalString(const QString &text, int after) const
{
    const qsizetype point = text.indexOf(u'.');
    if (point < 0)
        return text;
    // Counts characters as the user sees them, so a surrogate pair is never cut in two.
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(point + 1);
    qsizetype end = point + 1;
    for (int i = 0; i < after; ++i) {
        const qsizetype next = finder.toNextBoundary();
        if (next < 0)
            return text;
        end = next;
    }
    if (end >= text.size())
        return text;
    return text.left(end) + u'…';
}

std::optional<std::pair<QString, QString>> LocationHelper::addPlusOrMinusToValues(
    const QString &latitude, const QString &longitude) const
{
    const auto latitudeValue = wholeTextDouble(latitude);
    const auto longitudeValue = wholeTextDouble(longitude);
    if (!latitudeValue || !longitudeValue)
        return std::nullopt;
    // Negative zero counts as zero: "+0", never "+-0", so that the text reads back.
    const auto signedText = [](double value) {
        return value >= 0 ? u'+' + shortestText(value == 0 ? 0.0 : value) : shortestText(value);
    };
    return std::pair {signedText(*latitudeValue), signedText(*longitudeValue)};
}

void LocationHelper::retrieveLocationDescription(
    Coordinate2D coordinate, std::function<void(const QList<Placemark> &)> closure) const
{
    Geocoder::shared().reverseGeocodeLocation(coordinate, std::move(closure));
}

QString LocationHelper::formatPairToDMS(Coordinate2D coordinate) const
{
    return formatToDMS(coordinate.latitude, CoordinateAxis::Latitude) + QStringLiteral(", ")
        + formatToDMS(coordinate.longitude, CoordinateAxis::Longitude);
}

QString LocationHelper::formatPairToDMM(Coordinate2D coordinate) const
{
    return formatToDMM(coordinate.latitude, CoordinateAxis::Latitude) + QStringLiteral(", ")
        + formatToDMM(coordinate.longitude, CoordinateAxis::Longitude);
}
