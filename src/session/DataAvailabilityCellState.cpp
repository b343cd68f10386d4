#include "DataAvailabilityCellState.h"

#include "Node.h"
#include "StringHelpers.h"
#include "metadata/MetadataStorage.h"

#include <QCoreApplication>

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

bool flagIsSet(const Node &node, const QString &key)
{
    return MetadataStorage::shared().getStringValue(node.absolutePath, key,
                                                    MetadataSource::ExifToolGeneric)
        == u"1"_s;
}

// The location fields whose divergence flag is set: the XMP copy's ("CityDivergent") or the
// sidecar's ("SidecarCityDivergent").
QStringList divergentFields(const Node &node, const QString &flagPrefix)
{
    static const std::array<std::pair<QString, QString>, 4> fields
        = {{{u"City"_s, u"City"_s},
            {u"Country"_s, u"Country"_s},
            {u"State/Province"_s, u"State"_s},
            {u"Sub-location"_s, u"Sublocation"_s}}};
    QStringList named;
    for (const auto &[name, flag] : fields) {
        if (flagIsSet(node, flagPrefix + flag + u"Divergent"_s))
            named << name;
    }
    return named;
}

} // namespace

std::optional<DataAvailabilityCellState> DataAvailabilityCellState::configure(
    const Node &node, const QString &valueKey, Tooltip tooltip)
{
    if (valueKey.isEmpty())
        return std::nullopt;
    const bool isGPS = valueKey == u"GPSDataAvailable"_s;
    const QString label = isGPS ? u"GPS location"_s : u"IPTC location"_s;

    DataAvailabilityCellState state;
    const DisplayStringWrapper display = node.getDisplayString(valueKey);
    switch (display.kind()) {
    case DisplayStringWrapper::Kind::Waiting:
        state = {Symbol::Waiting, Tint::ControlText, "Loading "_L1 + label + u" data…"_s, true};
        break;
    case DisplayStringWrapper::Kind::NotPresent:
        state = {Symbol::NotPresent, Tint::DisabledControlText,
                 "No "_L1 + label + " data present"_L1};
        break;
    case DisplayStringWrapper::Kind::Present: {
        const QString &word = display.text();
        if (word == u"none"_s) {
            state
                = {Symbol::None, Tint::DisabledControlText, "No "_L1 + label + " data present"_L1};
        } else if (word == u"complete"_s) {
            state = {Symbol::Complete, Tint::Green, "Complete "_L1 + label + " data present"_L1};
        } else if (word == u"incomplete"_s) {
            state = {Symbol::Incomplete, Tint::Yellow,
                     isGPS ? u"Incomplete GPS location data — one or more coordinates are missing"_s
                           : u"Incomplete IPTC location data — one or more fields are missing"_s};
        } else if (word == u"divergent"_s) {
            state = {Symbol::Divergent, Tint::SystemOrange,
                     tooltip == Tooltip::Include ? divergenceTooltip(node, isGPS) : QString()};
        } else {
            return std::nullopt;
        }
        break;
    }
    }
    if (tooltip == Tooltip::Omit) {
        state.tooltip.clear();
        return state;
    }
    if (flagIsSet(node, u"XMPPresent"_s))
        state.tooltip
            += u" — file also contains an XMP packet; changes will be mirrored into XMP."_s;
    return state;
}

QString DataAvailabilityCellState::divergenceTooltip(const Node &node, bool isGPS)
{
    // A sidecar that disagrees with the file is named first: its value is the one hidden.
    const std::optional<QString> sidecar = MetadataStorage::shared().getStringValue(
        node.absolutePath, u"SidecarName"_s, MetadataSource::ExifToolGeneric);
    if (sidecar) {
        const QString quoted = u"“"_s + *sidecar + u"”"_s;
        if (isGPS && flagIsSet(node, u"SidecarGPSDivergent"_s)) {
            return "GPS coordinates differ between the file and its XMP sidecar "_L1 + quoted
                + u"."_s;
        }
        const QStringList differing = isGPS ? QStringList() : divergentFields(node, u"Sidecar"_s);
        if (!differing.isEmpty())
            return "The file and its XMP sidecar "_L1 + quoted + " disagree on: "_L1
                + StringHelpers::englishListJoined(differing) + u"."_s;
    }
    if (isGPS) {
        return u"GPS coordinates differ between the legacy packet (EXIF/QuickTime) and the "
               "embedded XMP. Saving will sync both."_s;
    }
    const QStringList named = divergentFields(node, QString());
    if (named.isEmpty())
        return u"IPTC and XMP location fields disagree. Saving will sync them via MWG."_s;
    return "IPTC and XMP disagree on: "_L1 + StringHelpers::englishListJoined(named)
        + ". Saving will sync them via MWG."_L1;
}

QString DataAvailabilityCellState::symbolName(Symbol symbol)
{
    switch (symbol) {
    case Symbol::Waiting:
        return u"arrow.clockwise.circle.fill"_s;
    case Symbol::NotPresent:
        return u"xmark"_s;
    case Symbol::None:
        return u"xmark.circle.fill"_s;
    case Symbol::Complete:
        return u"checkmark"_s;
    case Symbol::Incomplete:
        return u"exclamationmark.triangle.fill"_s;
    case Symbol::Divergent:
        return u"exclamationmark.octagon.fill"_s;
    }
    return {};
}

QString DataAvailabilityCellState::symbolDescription(Symbol symbol)
{
    switch (symbol) {
    case Symbol::Waiting:
        return QCoreApplication::translate("PreviewTable", "Waiting");
    case Symbol::NotPresent:
    case Symbol::None:
        return QCoreApplication::translate("PreviewTable", "Not Present");
    case Symbol::Complete:
        return QCoreApplication::translate("PreviewTable", "Present");
    case Symbol::Incomplete:
        return QCoreApplication::translate("PreviewTable", "Incomplete");
    case Symbol::Divergent:
        return QCoreApplication::translate("PreviewTable", "Legacy and XMP data disagree");
    }
    return {};
}
