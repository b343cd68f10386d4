#include "MapOverlay.h"

#include "MapDelegate.h"
#include "MapMainContent.h"
#include "location/GPSCoordinateComponent.h"
#include "session/DataModel.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

QString signedSixDecimals(double value)
{
    return (value >= 0.0 ? u"+"_s : u"-"_s) + QString::asprintf("%.6f", std::fabs(value));
}

} // namespace

MapOverlay::MapOverlay(DataModel &model, MapDelegate &delegate)
    : _overlayMode(std::make_shared<StraightReadWriteVariable<MapOverlayMode>>(
        MapOverlayMode::areaFileSelector))
    , displayRevision(std::make_shared<StraightVariable<int>>(0))
    , m_model(model)
    , m_delegate(delegate)
{ }

void MapOverlay::mouseDown(QPointF point)
{
    switch (overlayMode()) {
    case MapOverlayMode::areaFileSelector:
        startPoint = point;
        selectionRect.reset();
        needsDisplay();
        break;
    case MapOverlayMode::fileSelector:
        m_lastPoint = point;
        m_didDrag = false;
        break;
    default:
        break;
    }
}

void MapOverlay::mouseDragged(QPointF point)
{
    if (overlayMode() == MapOverlayMode::areaFileSelector && startPoint) {
        selectionRect = QRectF(
            QPointF(std::min(startPoint->x(), point.x()), std::min(startPoint->y(), point.y())),
            QPointF(std::max(startPoint->x(), point.x()), std::max(startPoint->y(), point.y())));
        needsDisplay();
        return;
    }
    if (overlayMode() == MapOverlayMode::fileSelector && m_lastPoint) {
        // Any move counts as a drag. The map follows the mouse: screen y grows downwards here.
        m_didDrag = true;
        const double dx = point.x() - m_lastPoint->x();
        const double dy = point.y() - m_lastPoint->y();
        const MapViewState state = m_delegate.viewState();
        const CoordinateRegion region = MapGeometry::region(state);
        const double latitudePerPoint = region.latitudeDelta / state.height;
        const double longitudePerPoint = region.longitudeDelta / state.width;
        m_delegate.setCenterCoordinate({state.center.latitude + dy * latitudePerPoint,
                                        state.center.longitude - dx * longitudePerPoint},
                                       false);
        m_lastPoint = point;
    }
}

void MapOverlay::mouseUp(QPointF point)
{
    switch (overlayMode()) {
    case MapOverlayMode::areaFileSelector:
    case MapOverlayMode::fileSelector:
        if (selectionRect) {
            const QRectF rect = *selectionRect;
            selectionRect.reset();
            startPoint.reset();
            needsDisplay();
            // Clusters need nothing of their own: the files stand for themselves.
            selectAndShow(m_delegate.nodesInRect(rect));
            return;
        }
        if (overlayMode() == MapOverlayMode::fileSelector && m_lastPoint) {
            m_lastPoint.reset();
            if (m_didDrag)
                return;
            const std::optional<AnnotationRef> hit = m_delegate.findAnnotationView(point);
            if (!hit) {
                selectAndShow({});
            } else if (hit->kind == AnnotationKind::cluster) {
                m_delegate.selectAnnotation(*hit, true);
            } else if (hit->kind == AnnotationKind::mediaFile) {
                if (const NodePtr node = m_delegate.nodeOf(*hit))
                    selectAndShow({node});
            }
        }
        startPoint.reset();
        break;
    case MapOverlayMode::addPin:
        if (m_pinWorkflow)
            m_pinWorkflow->addPinUsingCurrentFlagWorkflow(
                MapGeometry::coordinateForPoint(m_delegate.viewState(), point), false);
        break;
    case MapOverlayMode::selectPin:
        selectPinNear(point);
        break;
    case MapOverlayMode::deletePin:
        deletePinNear(point);
        break;
    }
}

void MapOverlay::selectAndShow(const QList<NodePtr> &nodes)
{
    m_model.setSelectedNodes(nodes);
    MapMainContent::selectRowsAccordingToCurrentSelectionVariables();
    m_delegate.refreshClusterSelectionStates();
}

void MapOverlay::selectPinNear(QPointF point)
{
    const std::optional<AnnotationRef> nearest = m_delegate.nearestAnnotation(point, pinNearness);
    if (!nearest) {
        m_delegate.setSelectedAnnotations({});
        return;
    }
    m_delegate.selectAnnotation(*nearest, true);
    if (nearest->kind != AnnotationKind::pin)
        return;
    const std::optional<Coordinate2D> coordinate = m_delegate.coordinateOf(*nearest);
    if (!coordinate)
        return;
    m_model._pinnedLatitudeString->setValue(signedSixDecimals(coordinate->latitude));
    m_model._pinnedLongitudeString->setValue(signedSixDecimals(coordinate->longitude));
    m_model.setCurrentPinIndex(int(nearest->id));
    m_model.updateCurrentPinDisplay();
}

void MapOverlay::deletePinNear(QPointF point)
{
    QList<AnnotationRef> annotations = m_delegate.selectedAnnotations();
    if (annotations.isEmpty()) {
        if (const std::optional<AnnotationRef> nearest
            = m_delegate.nearestAnnotation(point, pinNearness))
            annotations = {*nearest};
    }
    // Indices are not adjusted as pins go: with several selected, a later index refers to the
    // list as already shortened. More than one selected pin does not occur in practice.
    for (const AnnotationRef &annotation : annotations) {
        QList<Pin> pins = m_model._pins->value();
        if (annotation.kind != AnnotationKind::pin || annotation.id < 0
            || annotation.id >= pins.size())
            continue;
        pins.removeAt(annotation.id);
        m_model._pins->setValue(pins);
        m_model.setHasPins(!pins.isEmpty());
        if (m_model.currentPinIndex() >= pins.size())
            m_model.setCurrentPinIndex(int(pins.size()) - 1);
    }
    m_model.updateCurrentPinDisplay();
}
