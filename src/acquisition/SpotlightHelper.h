#pragma once

#include "ExtractedValue.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QVariantHash>

#include <optional>

// Source 31: the attributes a desktop search index keeps for a file. Linux has no such index,
// so the item's attributes are computed from the file itself, as the index's importers would:
// MediaInfo for audio and video, exiv2 for images, the file's times and its extended attributes
// (user.xdg.origin.url, user.xdg.referrer.url, user.xdg.comment).
// Read-only after construction; runs on the thread that asks.
class SpotlightHelper
{
public:
    enum class RoundingPolicy { roundToOneDecimal, dontRound };

    struct Attribute
    {
        QString key;
        QString attribute; // the attribute's name without its common prefix
    };
    struct NumericAttribute
    {
        QString key;
        QString attribute;
        RoundingPolicy roundingPolicy = RoundingPolicy::dontRound;
    };

    static const SpotlightHelper &shared();

#if __has_include("metadata/MetadataStorage.h")
    // Reads one file and stores its values in MetadataStorage at source 31, on this thread;
    // the stores themselves are asynchronous on the store's queue.
    void retrieveAndStoreAllTagsFor(const QString &path) const;
#endif

    // The item of a file: attribute name to a text, a list of texts, an integer, a double, a
    // date or a list of dates. Absent when the file can't be looked at.
    static std::optional<QVariantHash> itemAttributes(const QString &path);

    // The values of one file in their order of storing.
    ExtractedValues extract(const QString &path) const;
    // The four tables applied to an item's attributes.
    ExtractedValues valuesFromAttributes(const QVariantHash &attributes) const;

    // The item's content creation date, or the distant past.
    QDateTime getContentCreateDate(const QString &path) const;
    std::optional<QString> getItemCopyright(const QString &path) const;

    const QList<Attribute> allStringValues;
    const QList<Attribute> allStringArrayValues;
    const QList<NumericAttribute> allNumericValues;
    const QList<Attribute> allDateValues;

private:
    SpotlightHelper();
};
