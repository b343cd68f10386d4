#include "HeadlessMapView.h"

void HeadlessMapView::addPointAnnotation(const PointAnnotation &annotation)
{
    m_pointAnnotations.append(annotation);
}
