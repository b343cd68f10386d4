#pragma once

#include "MapAnnotationSink.h"
#include "MapView.h"

#include <QList>

// A map without a view, for tests. As the list's marker sink it keeps what was added, in order.
// As a map view it takes every camera change at once and keeps the scenes it was given, so that
// the logic can be driven and looked at without a page. Main thread only, like the map.
class HeadlessMapView
    : public MapAnnotationSink
    , public MapView
{
public:
    explicit HeadlessMapView(MapViewState state = {{0.0, 0.0}, 2.0, 800.0, 600.0});

    void addPointAnnotation(const PointAnnotation &annotation) override;
    void removeAllPointAnnotations() override { m_pointAnnotations.clear(); }
    const QList<PointAnnotation> &pointAnnotations() const { return m_pointAnnotations; }

    MapViewState viewState() const override { return m_state; }
    void setViewState(const MapViewState &state, bool animated) override;
    void showScene(const MapScene &scene) override { m_lastScene = scene; }

    const MapScene &lastScene() const { return m_lastScene; }
    int cameraChanges() const { return m_cameraChanges; }
    bool lastChangeAnimated() const { return m_lastChangeAnimated; }

private:
    QList<PointAnnotation> m_pointAnnotations;
    MapViewState m_state;
    MapScene m_lastScene;
    int m_cameraChanges = 0;
    bool m_lastChangeAnimated = false;
};
