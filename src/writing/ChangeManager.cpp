#include "ChangeManager.h"

#include "PendingWriteSink.h"
#include "acquisition/ExifToolHelper.h"
#include "location/GPSCoordinateComponent.h"
#include "location/IPTCLocationComponent.h"
#include "metadata/MetadataStorage.h"
#include "metadata/SidecarFiles.h"
#include "platform/MainQueue.h"
#include "session/DataModel.h"

#include <QFileInfo>

using namespace Qt::Literals::StringLiterals;

namespace {

DataModel *applicationDataModel = nullptr;

} // namespace

void ChangeManager::setDataModel(DataModel *model)
{
    applicationDataModel = model;
}

bool ChangeManager::hasDataModel()
{
    return applicationDataModel != nullptr;
}

DataModel &ChangeManager::dataModel()
{
    if (!applicationDataModel)
        qFatal("ChangeManager: no data model has been set");
    return *applicationDataModel;
}

const QHash<QString, QString> &ChangeManager::iptcToMWGMapping()
{
    static const QHash<QString, QString> mapping = {
        {u"City"_s, u"MWG:City"_s},
        {u"Country"_s, u"MWG:Country"_s},
        {u"Province-State"_s, u"MWG:State"_s},
        {u"Sub-location"_s, u"MWG:Location"_s},
    };
    return mapping;
}

QStringList ChangeManager::remappedToMWG(const QStringList &pairs)
{
    QStringList remapped;
    for (qsizetype i = 0; i + 1 < pairs.size(); i += 2) {
        remapped.append(iptcToMWGMapping().value(pairs.at(i), pairs.at(i)));
        remapped.append(pairs.at(i + 1));
    }
    return remapped;
}

QStringList ChangeManager::gpsTagValuePairs(const QString &fileExtension, const QString &latitude,
                                            const QString &longitude)
{
    QStringList pairs = {u"GPSLatitude#"_s, latitude, u"GPSLongitude#"_s, longitude};
    // QuickTime keeps the sign in its one location text, so it has no reference tags.
    if (!ExifToolHelper::isQuickTimeFamily(fileExtension)) {
        pairs << u"GPSLongitudeRef"_s << (longitude.startsWith(u'-') ? u"West"_s : u"East"_s);
        pairs << u"GPSLatitudeRef"_s << (latitude.startsWith(u'-') ? u"South"_s : u"North"_s);
    }
    return pairs;
}

QStringList ChangeManager::positionTagValuePairs(const QString &path, const QString &latitude,
                                                 const QString &longitude)
{
    QStringList pairs = gpsTagValuePairs(QFileInfo(path).suffix(), latitude, longitude);
    if (xmpPresent(path))
        pairs << u"XMP:GPSLatitude"_s << latitude << u"XMP:GPSLongitude"_s << longitude;
    return pairs;
}

bool ChangeManager::xmpPresent(const QString &path)
{
    return MetadataStorage::shared().getStringValue(path, u"XMPPresent"_s,
                                                    MetadataSource::ExifToolGeneric)
        == u"1"_s;
}

std::function<void(bool)> ChangeManager::reannounceSelectionHandler()
{
    // Re-assigning the selection makes every observer read the refreshed metadata. The files of
    // one batch report one after the other, so their re-announcements are folded into one: a
    // large selection is not gone through again for every file written.
    static bool reannouncePending = false;
    std::weak_ptr<StraightReadWriteVariable<QList<NodePtr>>> selection = dataModel()._selectedNodes;
    return [selection](bool) {
        if (reannouncePending)
            return;
        reannouncePending = true;
        MainQueue::post([selection] {
            reannouncePending = false;
            if (auto variable = selection.lock())
                variable->setValue(variable->value());
        });
    };
}

void ChangeManager::applyGPSToCurrentSelection()
{
    GPSCoordinateComponent &component = *dataModel().gpsCoordinateComponent;
    applyGPSCoordinates(component._currentLatitudeInInterface->value(),
                        component._currentLongitudeInInterface->value());
}

void ChangeManager::applyCurrentPinnedGPSToCurrentSelection()
{
    DataModel &model = dataModel();
    applyGPSCoordinates(model._pinnedLatitudeString->value(),
                        model._pinnedLongitudeString->value());
}

void ChangeManager::applyCurrentPinnedCityToCurrentSelection()
{
    applyPinnedField(dataModel()._pinnedLocationCity->value(), u"City"_s,
                     *dataModel().cityComponent);
}

void ChangeManager::applyCurrentPinnedRegionToCurrentSelection()
{
    applyPinnedField(dataModel()._pinnedLocationRegion->value(), u"Province-State"_s,
                     *dataModel().regionComponent);
}

void ChangeManager::applyCurrentPinnedSubLocationToCurrentSelection()
{
    applyPinnedField(dataModel()._pinnedSublocationName->value(), u"Sub-location"_s,
                     *dataModel().sublocationComponent);
}

void ChangeManager::applyCurrentPinnedCountryToCurrentSelection()
{
    applyPinnedField(dataModel()._pinnedLocationCountry->value(), u"Country"_s,
                     *dataModel().countryComponent);
}

void ChangeManager::applyLocationFieldToCurrentSelection(const QString &tag, const QString &text)
{
    applyTagsToCurrentSelection({tag, text}, nullptr);
}

void ChangeManager::applyPinnedField(const QString &pinnedText, const QString &tag,
                                     IPTCLocationComponent &component)
{
    if (pinnedText.isEmpty())
        return;
    // The editor shows the value at once; the store follows after the write.
    applyTagsToCurrentSelection({tag, pinnedText}, [&component, pinnedText] {
        component._currentValueInInterface->setValue(pinnedText);
    });
}

void ChangeManager::applyGPSCoordinates(const QString &latitude, const QString &longitude)
{
    // The texts go on unchecked: callers hand over signed decimal degrees.
    if (latitude.isEmpty() || longitude.isEmpty())
        return;
    DataModel &model = dataModel();
    const QList<NodePtr> selection = model.selectedNodes();
    if (selection.isEmpty())
        return;

    model.gpsCoordinateComponent->setInterfaceCoordinates(latitude, longitude);
    PendingWriteSink &sink = PendingWriteSink::shared();
    sink.clearErrors();
    for (const NodePtr &node : selection) {
        // The file, its XMP sidecar or both, as the settings and the file's type say.
        for (const QString &path : SidecarFiles::writeTargets(node->absolutePath)) {
            sink.addPendingWrite({path, positionTagValuePairs(path, latitude, longitude), node,
                                  reannounceSelectionHandler()});
        }
    }
    sink.flushImmediately();
}

void ChangeManager::applyTagsToCurrentSelection(const QStringList &tagValuePairs,
                                                const std::function<void()> &beforeWriting)
{
    const QList<NodePtr> selection = dataModel().selectedNodes();
    if (selection.isEmpty())
        return;
    if (beforeWriting)
        beforeWriting();

    PendingWriteSink &sink = PendingWriteSink::shared();
    sink.clearErrors();
    for (const NodePtr &node : selection) {
        for (const QString &path : SidecarFiles::writeTargets(node->absolutePath)) {
            // Decided per file: one selection may go out with plain tags for some files and MWG
            // tags for others.
            const QStringList pairs
                = xmpPresent(path) ? remappedToMWG(tagValuePairs) : tagValuePairs;
            sink.addPendingWrite({path, pairs, node, reannounceSelectionHandler()});
        }
    }
    sink.flushImmediately();
}
