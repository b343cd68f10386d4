#pragma once

#include "metadata/MetadataSource.h"

#include <QList>
#include <QString>
#include <QStringView>

// One value found in a worker's answer, addressed as the store addresses it.
struct ExtractedTag
{
    MetadataSource source;
    QString key;
    QString value;

    bool operator==(const ExtractedTag &) const = default;
};

// Turns the read worker's answer into the values to store, in the order they are to be stored:
// the tags by their group's source, the counted values split up, and the city and sublocation
// computed from the geolocation tags last.
namespace ExifToolResponseParser {

inline constexpr QStringView keyPrefix = u"{extracted-key}:";

QList<ExtractedTag> parse(QStringView response);

// "3 of 12", "3/12" or "3": the count under firstKey, the total under secondKey.
void extractNOfMValues(QStringView value, const QString &firstKey, const QString &secondKey,
                       MetadataSource source, QList<ExtractedTag> &into);

// Line feed, carriage return, vertical tab, form feed, next line, line and paragraph separator.
bool isNewline(QChar character);

} // namespace ExifToolResponseParser
