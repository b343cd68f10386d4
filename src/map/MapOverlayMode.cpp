#include "MapOverlayMode.h"

#include <QCoreApplication>

#include <array>

using namespace Qt::StringLiterals;

const MapOverlayModeInfo &MapOverlayModeInfo::of(MapOverlayMode mode)
{
    static const std::array<MapOverlayModeInfo, count> table = [] {
        const auto tr = [](const char *text) {
            return QCoreApplication::translate("MapOverlay", text);
        };
        return std::array<MapOverlayModeInfo, count> {{
            {MapOverlayMode::areaFileSelector, MapCursor::crosshair, true,
             u"switchToRubberBandMode"_s, u"selection.pin.in.out"_s, QString(), tr("Rubber Band"),
             tr("Select all files within a rectanglar selection")},
            {MapOverlayMode::fileSelector, MapCursor::arrow, false, u"switchToPointerMode"_s,
             u"cursorarrow"_s, QString(), tr("Pointer"), tr("Move map with cursor")},
            {MapOverlayMode::addPin, MapCursor::crosshair, true, u"switchToDropPinMode"_s,
             u"mappin"_s, u"plus"_s, tr("Drop Pin"), tr("Drop a new pin")},
            {MapOverlayMode::selectPin, MapCursor::pointingHand, true, u"switchToSelectPinMode"_s,
             u"mappin"_s, u"pointer.arrow.ipad"_s, tr("Select Pin"), tr("Select an existing pin")},
            {MapOverlayMode::deletePin, MapCursor::operationNotAllowed, true,
             u"switchToDeletePinMode"_s, u"mappin"_s, u"minus"_s, tr("Delete Pin"),
             tr("Delete selected pin")},
        }};
    }();
    return table[size_t(mode)];
}
