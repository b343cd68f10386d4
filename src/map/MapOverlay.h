#pragma once

#include "MapOverlayMode.h"
#include "bricks/Variables.h"
#include "session/Node.h"

#include <QPointF>
#include <QRectF>

#include <memory>
#include <optional>

class DataModel;
class MapDelegate;
class PinWorkflow;

// The mouse on the map in the modes where a click means something other than moving it: the
// rubber band that selects the files in a rectangle, and adding, selecting and deleting pins.
// The view lies over the map, draws the band and the cursor, and forwards the left button's
// events here with points of the map view. Main thread only.
class MapOverlay
{
public:
    MapOverlay(DataModel &model, MapDelegate &delegate);

    std::shared_ptr<StraightReadWriteVariable<MapOverlayMode>> _overlayMode;
    MapOverlayMode overlayMode() const { return _overlayMode->value(); }
    void setOverlayMode(MapOverlayMode mode) { _overlayMode->setValue(mode); }
    MapCursor cursor() const { return MapOverlayModeInfo::of(overlayMode()).cursor; }
    bool takesMouse() const { return MapOverlayModeInfo::of(overlayMode()).overlayShown; }

    // Where a new pin goes; without one, a click in the add-pin mode does nothing.
    void setPinWorkflow(PinWorkflow *workflow) { m_pinWorkflow = workflow; }

    void mouseDown(QPointF point);
    void mouseDragged(QPointF point);
    void mouseUp(QPointF point);

    std::optional<QRectF> selectionRect;
    std::optional<QPointF> startPoint;
    // Counts the changes of the band; the view redraws when it moves.
    std::shared_ptr<StraightVariable<int>> displayRevision;

    static constexpr double pinNearness = 22.0;

private:
    void needsDisplay() { displayRevision->setValue(displayRevision->value() + 1); }
    void selectAndShow(const QList<NodePtr> &nodes);
    void selectPinNear(QPointF point);
    void deletePinNear(QPointF point);

    DataModel &m_model;
    MapDelegate &m_delegate;
    PinWorkflow *m_pinWorkflow = nullptr;
    // The pointer mode's drag: where the mouse was last, and whether it has moved.
    std::optional<QPointF> m_lastPoint;
    bool m_didDrag = false;
};
