#pragma once

#include "ExtractedValue.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <optional>
#include <utility>

class ExivImage;

// Reads an image's properties in the form of the platform's image property dictionaries
// (top level, Exif, IPTC, GPS, TIFF) through exiv2, and turns them into the values of source 3
// by five fixed tables. No child process, so it is cheap next to ExifTool.
// Stateless after construction; runs on the thread that asks.
class ImageIOHelper
{
public:
    enum class Transformation { date, integer, decimal, string };

    struct Instruction
    {
        QString tag;
        Transformation transformation = Transformation::string;
    };
    // Property key (without its common prefix) and what becomes of its value, in table order.
    using ExtractionModel = QList<std::pair<QString, Instruction>>;

    // The property dictionaries of image 0; a dictionary the file has nothing for is absent.
    struct ImageProperties
    {
        QVariantMap properties;
        std::optional<QVariantMap> exif;
        std::optional<QVariantMap> iptc;
        std::optional<QVariantMap> gps;
        std::optional<QVariantMap> tiff;
    };

    static const ImageIOHelper &shared();

#if __has_include("metadata/MetadataStorage.h")
    // Reads one file and stores its values in MetadataStorage at source 3, on this thread;
    // the stores themselves are asynchronous on the store's queue.
    void retrieveAndStoreAllTagsFor(const QString &path) const;
#endif

    // The values of one file in their order of storing; empty for a type outside
    // supportedFileTypes or an unreadable file.
    ExtractedValues extract(const QString &path) const;

    // The dictionaries in the platform's form: numbers, texts, lists, data.
    static std::optional<ImageProperties> copyProperties(const QString &path);
    static ImageProperties propertiesOf(const ExivImage &image);

    // Applies one table to one dictionary, appending to values.
    void extract(const QVariantMap &dic, const ExtractionModel &instructions,
                 ExtractedValues &values) const;

    const ExtractionModel imageMetadataExtractionModel;
    const ExtractionModel gpsMetadataExtractionModel;
    const ExtractionModel iptcMetadataExtractionModel;
    const ExtractionModel tiffMetadataExtractionModel;
    const ExtractionModel exifMetadataExtractionModel;
    // Lower-case extensions of the image types read here, then "m4b".
    const QStringList supportedFileTypes;

private:
    ImageIOHelper();
};
