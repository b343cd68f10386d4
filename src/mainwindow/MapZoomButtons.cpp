#include "MapZoomButtons.h"

#include "map/MapView.h"

#include <QEvent>

namespace {
constexpr int margin = 8;
}

MapZoomButtons::MapZoomButtons(MapView &view, QWidget *map)
    : MapFloatingBar(map)
{
    addZoomButtons(view);
    map->installEventFilter(this);
    place();
}

bool MapZoomButtons::eventFilter(QObject *watched, QEvent *event)
{
    // The web view adds its own render widget as a child after the bar; the bar stays on top.
    if (event->type() == QEvent::Resize || event->type() == QEvent::ChildAdded)
        place();
    return MapFloatingBar::eventFilter(watched, event);
}

void MapZoomButtons::place()
{
    adjustSize();
    move(parentWidget()->width() - width() - margin, margin);
    raise();
}
