#include "ExifToolResponseParser.h"

#include <limits>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

const QString genericGroup = u"exifToolGeneric"_s;

// A whole text that is a base-10 integer with an optional sign, as its own decimal form.
std::optional<QString> integerText(QStringView text)
{
    qsizetype index = 0;
    bool negative = false;
    if (index < text.size() && (text[index] == u'+' || text[index] == u'-')) {
        negative = text[index] == u'-';
        ++index;
    }
    if (index == text.size())
        return std::nullopt;
    // Accumulated as a negative number so that the most negative value fits too.
    qint64 value = 0;
    constexpr qint64 lowest = std::numeric_limits<qint64>::min();
    for (; index < text.size(); ++index) {
        const char16_t character = text[index].unicode();
        if (character < u'0' || character > u'9')
            return std::nullopt;
        const int digit = character - u'0';
        if (value < (lowest + digit) / 10)
            return std::nullopt;
        value = value * 10 - digit;
    }
    if (!negative) {
        if (value == lowest)
            return std::nullopt;
        value = -value;
    }
    return QString::number(value);
}

// Stores the two sides of value around separator, each that is an integer.
void storeAroundSeparator(QStringView value, QStringView separator, const QString &firstKey,
                          const QString &secondKey, MetadataSource source,
                          QList<ExtractedTag> &into)
{
    const qsizetype at = value.indexOf(separator);
    if (at < 0)
        return;
    if (const std::optional<QString> first = integerText(value.first(at)))
        into.append({source, firstKey, *first});
    if (const std::optional<QString> second = integerText(value.sliced(at + separator.size())))
        into.append({source, secondKey, *second});
}

struct PendingPair
{
    QString key;
    QString value;
};

// What the geolocation tags said, for the computed city and sublocation.
struct GeolocationSeen
{
    std::optional<QString> city;
    QString cityGroup = genericGroup;
    std::optional<QString> subregion;
    std::optional<QString> featureCode;
};

void storePair(const PendingPair &pair, GeolocationSeen &seen, QList<ExtractedTag> &into)
{
    const QStringList pieces = pair.key.split(u':', Qt::SkipEmptyParts);
    QString group = genericGroup;
    QString tag;
    if (pieces.size() == 1) {
        tag = pieces[0];
    } else if (pieces.size() == 2) {
        group = pieces[0];
        tag = pieces[1];
    }
    const MetadataSource source = MetadataSources::fromExifToolGroupString(group);

    if (tag == u"TrackNumber" || tag == u"Track") {
        ExifToolResponseParser::extractNOfMValues(pair.value, u"track"_s, u"numTrack"_s, source,
                                                  into);
        return;
    }
    if (tag == u"DiskNumber" || tag == u"PartOfSet") {
        ExifToolResponseParser::extractNOfMValues(pair.value, u"cd"_s, u"numCds"_s, source, into);
        return;
    }
    into.append({source, tag, pair.value});
    if (tag == u"GeolocationCity") {
        seen.city = pair.value;
        seen.cityGroup = group;
    } else if (tag == u"GeolocationSubregion") {
        seen.subregion = pair.value;
    } else if (tag == u"GeolocationFeatureCode") {
        seen.featureCode = pair.value;
    }
}

// A section of a populated place (GeoNames' PPLX) shows its surrounding place as the city and
// itself as the sublocation; the surrounding place is the subregion without its county word.
void storeComputedLocation(const GeolocationSeen &seen, QList<ExtractedTag> &into)
{
    if (!seen.city)
        return;
    QString subregion = seen.subregion.value_or(QString());
    for (const QStringView suffix : {u" County", u" Parish", u" Borough"}) {
        if (subregion.endsWith(suffix)) {
            subregion.chop(suffix.size());
            break;
        }
    }
    const MetadataSource source = MetadataSources::fromExifToolGroupString(seen.cityGroup);
    if (seen.featureCode == u"PPLX" && !subregion.isEmpty()) {
        into.append({source, u"computedCity"_s, subregion});
        into.append({source, u"computedSublocation"_s, *seen.city});
    } else {
        into.append({source, u"computedCity"_s, *seen.city});
    }
}

} // namespace

namespace ExifToolResponseParser {

bool isNewline(QChar character)
{
    switch (character.unicode()) {
    case 0x000A:
    case 0x000B:
    case 0x000C:
    case 0x000D:
    case 0x0085:
    case 0x2028:
    case 0x2029:
        return true;
    default:
        return false;
    }
}

void extractNOfMValues(QStringView value, const QString &firstKey, const QString &secondKey,
                       MetadataSource source, QList<ExtractedTag> &into)
{
    storeAroundSeparator(value, u" of ", firstKey, secondKey, source, into);
    storeAroundSeparator(value, u"/", firstKey, secondKey, source, into);
    if (const std::optional<QString> whole = integerText(value))
        into.append({source, firstKey, *whole});
}

QList<ExtractedTag> parse(QStringView response)
{
    QList<ExtractedTag> tags;
    GeolocationSeen seen;
    PendingPair pending;
    bool valueSeen = false;

    qsizetype lineStart = 0;
    while (lineStart <= response.size()) {
        qsizetype lineEnd = lineStart;
        while (lineEnd < response.size() && !isNewline(response[lineEnd]))
            ++lineEnd;
        const QStringView line = response.sliced(lineStart, lineEnd - lineStart);
        lineStart = lineEnd + 1;

        if (!line.startsWith(keyPrefix)) {
            const QStringView trimmed = line.trimmed();
            if (pending.value.isEmpty())
                pending.value = trimmed.toString();
            else
                pending.value.append(u'\n').append(trimmed);
            valueSeen = true;
            continue;
        }
        // A pair is complete only when the next key line arrives.
        if (valueSeen && !pending.value.isEmpty())
            storePair(pending, seen, tags);
        pending.key = line.sliced(keyPrefix.size()).toString();
        pending.value.clear();
    }
    storeComputedLocation(seen, tags);
    return tags;
}

} // namespace ExifToolResponseParser
