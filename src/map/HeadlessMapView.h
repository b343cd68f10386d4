#pragma once

#include "MapAnnotationSink.h"

#include <QList>

// A map without a view: it keeps what was added, in order, so that it can be looked at.
// Main thread only, like the map it stands in for.
class HeadlessMapView : public MapAnnotationSink
{
public:
    void addPointAnnotation(const PointAnnotation &annotation) override;

    const QList<PointAnnotation> &pointAnnotations() const { return m_pointAnnotations; }
    void removeAllPointAnnotations() { m_pointAnnotations.clear(); }

private:
    QList<PointAnnotation> m_pointAnnotations;
};
