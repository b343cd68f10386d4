#pragma once

#include "MapFloatingBar.h"

class MapView;

// Zoom out and in over a map that has no window toolbar (the geotag dialog's): the bar keeps
// itself in the map's top right corner.
class MapZoomButtons : public MapFloatingBar
{
    Q_OBJECT

public:
    // The map widget is the bar's parent; the view is the same map, as its controller sees it.
    MapZoomButtons(MapView &view, QWidget *map);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void place();
};
