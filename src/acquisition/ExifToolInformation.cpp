#include "ExifToolInformation.h"

#include "ExifToolHelper.h"
#include "SidecarInformation.h"
#include "map/MediaFileMarkers.h"
#include "metadata/MetadataStorage.h"
#include "session/Node.h"

#include <QFileInfo>

namespace ExifToolInformation {

void retrieveInformation(const Node &node)
{
    MetadataStorage &storage = MetadataStorage::shared();
    const QString &path = node.absolutePath;
    const MetadataSource generic = MetadataSource::ExifToolGeneric;

    // The only caller, so the worker always runs with the geolocation feature on.
    ExifToolHelper::sharedInstance().obtainMetaDataFor(path, true);
    const QString extension = QFileInfo(path).suffix();
    // The sidecar's values stand in before the statuses are decided from the file's.
    SidecarInformation::storeSidecarValues(path, ExifToolHelper::isQuickTimeFamily(extension));
    storage.store(path, generic, QStringLiteral("retrieved"), true);

    const ExifToolHelper::KeyLookup valueOf = [&](const QString &key) {
        return storage.getStringValue(path, key, generic);
    };
    const ExifToolHelper::GPSStatusDecision gps
        = ExifToolHelper::decideGPSStatus(extension, valueOf);
    if (gps.addsMarker) {
        if (MediaFileMarkers *markers = MediaFileMarkers::installed())
            markers->addMarker(std::const_pointer_cast<Node>(node.shared_from_this()));
    }
    storage.store(path, generic, QStringLiteral("GPSDataAvailable"), int(gps.status));
    storage.store(path, generic, QStringLiteral("IPTCDataComplete"),
                  int(ExifToolHelper::decideIPTCStatus(valueOf)));
    node.signalDataIsNowReady(generic);
}

} // namespace ExifToolInformation
