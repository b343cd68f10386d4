#include "SidecarInformation.h"

#include "ExifToolHelper.h"
#include "ModernExifExtraction.h"
#include "metadata/MetadataStorage.h"
#include "metadata/SidecarFiles.h"

#include <QFileInfo>
#include <QHash>

#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

struct Field
{
    QString fileKey;
    QString sidecarKey;
    QString flag;
};

const std::array<Field, 4> &fields()
{
    static const std::array<Field, 4> all {{
        {u"City"_s, u"SidecarCity"_s, u"SidecarCityDivergent"_s},
        {u"Country"_s, u"SidecarCountry"_s, u"SidecarCountryDivergent"_s},
        {u"Province-State"_s, u"SidecarState"_s, u"SidecarStateDivergent"_s},
        {u"Sub-location"_s, u"SidecarLocation"_s, u"SidecarSublocationDivergent"_s},
    }};
    return all;
}

// Positions closer than this are the same, as the worker judges the XMP copy.
constexpr double gpsTolerance = 0.000001;

std::optional<double> number(const std::optional<QString> &text)
{
    if (!text)
        return std::nullopt;
    bool ok = false;
    const double value = text->trimmed().toDouble(&ok);
    return ok ? std::optional(value) : std::nullopt;
}

// The file's position as a signed pair, from its stored values.
std::optional<std::pair<double, double>> filePosition(const QString &path, bool quickTime)
{
    MetadataStorage &storage = MetadataStorage::shared();
    const MetadataSource generic = MetadataSource::ExifToolGeneric;
    std::optional<double> latitude
        = number(storage.getStringValue(path, u"GPSLatitude#"_s, generic));
    std::optional<double> longitude
        = number(storage.getStringValue(path, u"GPSLongitude#"_s, generic));
    if (!latitude || !longitude)
        return std::nullopt;
    if (!quickTime) {
        if (storage.getStringValue(path, u"GPSLatitudeRef"_s, generic) == u"South"_s)
            latitude = -std::abs(*latitude);
        if (storage.getStringValue(path, u"GPSLongitudeRef"_s, generic) == u"West"_s)
            longitude = -std::abs(*longitude);
    }
    return std::pair(*latitude, *longitude);
}

} // namespace

void SidecarInformation::storeSidecarValues(const QString &path, bool fileIsQuickTime)
{
    const QString sidecar = SidecarFiles::existingSidecar(path);
    if (sidecar.isEmpty())
        return;
    ModernExifExtraction &extraction = ModernExifExtraction::shared();
    QHash<QString, QString> values;
    if (extraction.whiteList.isEmpty()) {
        extraction.whiteList = ExifToolHelper::sharedInstance().whiteList();
        extraction.rawWhiteList = ExifToolHelper::sharedInstance().rawWhiteList();
    }
    for (const ExtractedTag &tag : extraction.extractTagsFor(sidecar, true)) {
        if (tag.source == MetadataSource::ExifToolGeneric)
            values.insert(tag.key, tag.value);
    }

    MetadataStorage &storage = MetadataStorage::shared();
    const MetadataSource generic = MetadataSource::ExifToolGeneric;
    const auto fileValue = [&](const QString &key) {
        return storage.getStringValue(path, key, generic);
    };
    storage.store(path, generic, QString::fromLatin1(sidecarNameKey),
                  QFileInfo(sidecar).fileName());

    for (const Field &field : fields()) {
        const auto found = values.constFind(field.fileKey);
        if (found == values.cend())
            continue;
        storage.store(path, generic, field.sidecarKey, *found);
        const std::optional<QString> own = fileValue(field.fileKey);
        if (!own)
            storage.store(path, generic, field.fileKey, *found);
        else if (own->trimmed() != found->trimmed())
            storage.store(path, generic, field.flag, u"1"_s);
    }

    // The sidecar's position, signed, as its XMP holds it.
    const std::optional<double> latitude = number(values.value(u"XMPGPSLatitude#"_s));
    const std::optional<double> longitude = number(values.value(u"XMPGPSLongitude#"_s));
    if (!latitude || !longitude)
        return;
    storage.store(path, generic, u"SidecarGPSLatitude#"_s, values.value(u"XMPGPSLatitude#"_s));
    storage.store(path, generic, u"SidecarGPSLongitude#"_s, values.value(u"XMPGPSLongitude#"_s));
    if (const auto own = filePosition(path, fileIsQuickTime)) {
        if (std::abs(own->first - *latitude) > gpsTolerance
            || std::abs(own->second - *longitude) > gpsTolerance)
            storage.store(path, generic, QString::fromLatin1(gpsDivergentFlag), u"1"_s);
        return;
    }
    // No position of the file's own, not even half of one: the sidecar's stands in whole.
    if (fileValue(u"GPSLatitude#"_s) || fileValue(u"GPSLongitude#"_s))
        return;
    if (fileIsQuickTime) {
        storage.store(path, generic, u"GPSLatitude#"_s, QString::number(*latitude, 'g', 12));
        storage.store(path, generic, u"GPSLongitude#"_s, QString::number(*longitude, 'g', 12));
        return;
    }
    for (const QString &key : {u"GPSLatitude#"_s, u"GPSLatitudeRef"_s, u"GPSLatitude"_s,
                               u"GPSLongitude#"_s, u"GPSLongitudeRef"_s, u"GPSLongitude"_s}) {
        const auto found = values.constFind(key);
        if (found != values.cend())
            storage.store(path, generic, key, *found);
    }
    if (!fileValue(u"GPSAltitude#"_s)) {
        for (const QString &key : {u"GPSAltitude#"_s, u"GPSAltitude"_s, u"GPSAltitudeRef"_s}) {
            const auto found = values.constFind(key);
            if (found != values.cend())
                storage.store(path, generic, key, *found);
        }
    }
}
