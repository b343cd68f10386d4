#pragma once

#include "ExtractedValue.h"

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// Source 4: the metadata of audio-visual files as a media framework's asset offers it. FFmpeg's
// libavformat supplies the common keys (title, artist, creation date, ISO 6709 location, ...),
// TagLib the ID3 frames, keyed by their four-letter identifiers.
// Read-only after construction; runs on the thread that asks.
class AVKitHelper
{
public:
    // One metadata item: a common key or a format key, and whichever values it has.
    struct MetadataItem
    {
        QString commonKey;
        QString key;
        std::optional<QString> stringValue;
        std::optional<QDateTime> dateValue;
        std::optional<double> numberValue;
    };

    struct Asset
    {
        QList<MetadataItem> commonMetadata;
        QList<MetadataItem> id3Metadata;
        std::optional<QString> lyrics;
    };

    static const AVKitHelper &shared();

#if __has_include("metadata/MetadataStorage.h")
    // Reads one file and stores its values in MetadataStorage at source 4, on this thread;
    // the stores themselves are asynchronous on the store's queue.
    void retrieveAndStoreAllTagsFor(const QString &path) const;
#endif

    // The asset of a file; a file that can't be read gives an empty asset.
    static Asset assetWithPath(const QString &path);

    // The values of one file in their order of storing; empty for extensions not listed.
    ExtractedValues extract(const QString &path) const;
    // The storing rules applied to an asset.
    ExtractedValues valuesFromAsset(const Asset &asset) const;

    // An ID3 key as it is looked up: one ending in a NUL keeps its first three characters.
    static QString id3LookupKey(const QString &key);

    const QStringList supportedFileExtensions;
    // The platform's key text (common keys and ID3 frame identifiers) to the stored tag.
    const QHash<QString, QString> stringValueKeys;

private:
    AVKitHelper();
};
