#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>

class DataModel;
class IPTCLocationComponent;

// Turns the user's "apply" into tag and value pairs for each selected file and hands them to
// the write sink. It decides which tags a position or a location field becomes per file type,
// and writes through the MWG tags where a file has an XMP packet so both copies stay in step.
// No state beyond the application's data model; main thread only.
class ChangeManager
{
public:
    ChangeManager() = delete;

    // The application's data model, which must be set before any apply; not owned.
    static void setDataModel(DataModel *model);
    static bool hasDataModel();
    // Re-assigns the selection once a file was written, so every view reads what is on disk.
    static std::function<void(bool)> reannounceSelectionHandler();

    static void applyGPSToCurrentSelection();
    static void applyCurrentPinnedGPSToCurrentSelection();
    static void applyCurrentPinnedCityToCurrentSelection();
    static void applyCurrentPinnedRegionToCurrentSelection();
    static void applyCurrentPinnedSubLocationToCurrentSelection();
    static void applyCurrentPinnedCountryToCurrentSelection();
    // A position given as two signed decimal texts; nothing happens when either is empty.
    static void applyGPSCoordinates(const QString &latitude, const QString &longitude);
    // One location field's tag (such as "City") with the text, which may be empty: an empty text
    // removes the field from the files.
    static void applyLocationFieldToCurrentSelection(const QString &tag, const QString &text);

    // Plain IPTC tags to their MWG names; the others pass unchanged.
    static const QHash<QString, QString> &iptcToMWGMapping();
    static QStringList remappedToMWG(const QStringList &pairs);
    // The pairs of one position for a file with the given extension, without the XMP pairs.
    static QStringList gpsTagValuePairs(const QString &fileExtension, const QString &latitude,
                                        const QString &longitude);
    // All the pairs of one position for the file: with the XMP copy where the file has XMP.
    static QStringList positionTagValuePairs(const QString &path, const QString &latitude,
                                             const QString &longitude);

private:
    static DataModel &dataModel();
    static void applyTagsToCurrentSelection(const QStringList &tagValuePairs,
                                            const std::function<void()> &beforeWriting);
    static void applyPinnedField(const QString &pinnedText, const QString &tag,
                                 IPTCLocationComponent &component);
    static bool xmpPresent(const QString &path);
};
