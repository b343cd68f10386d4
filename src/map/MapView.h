#pragma once

#include "MapGeometry.h"
#include "MapScene.h"

// The map as the logic sees it: a camera and a surface that draws a scene. The application's
// view is a web page; tests use HeadlessMapView. The view tells MapDelegate when the user moved
// it or clicked it (viewStateDidChange, viewClicked). Main thread only.
class MapView
{
public:
    virtual ~MapView() = default;
    virtual MapViewState viewState() const = 0;
    // Moves the camera. The state is taken at once, even while an animation runs.
    virtual void setViewState(const MapViewState &state, bool animated) = 0;
    virtual void showScene(const MapScene &scene) = 0;
};
