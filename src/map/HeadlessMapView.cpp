#include "HeadlessMapView.h"

HeadlessMapView::HeadlessMapView(MapViewState state)
    : m_state(state)
{ }

void HeadlessMapView::addPointAnnotation(const PointAnnotation &annotation)
{
    m_pointAnnotations.append(annotation);
}

void HeadlessMapView::setViewState(const MapViewState &state, bool animated)
{
    m_state = state;
    m_state.zoom = MapGeometry::clampedZoom(state.zoom);
    ++m_cameraChanges;
    m_lastChangeAnimated = animated;
}
