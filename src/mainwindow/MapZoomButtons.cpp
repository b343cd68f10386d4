#include "MapZoomButtons.h"

#include "MapSymbols.h"
#include "map/MapGeometry.h"
#include "map/MapView.h"

#include <QEvent>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {
constexpr int margin = 8;
}

MapZoomButtons::MapZoomButtons(MapView &view, QWidget *map)
    : MapFloatingBar(map)
    , m_view(view)
    , m_zoomOut(addButton(MapSymbols::icon(u"minus"_s, {}, u"zoom-out"_s), tr("Zoom Out"),
                          tr("Zoom out"), u"zoomOutButton"_s))
    , m_zoomIn(addButton(MapSymbols::icon(u"plus"_s, {}, u"zoom-in"_s), tr("Zoom In"),
                         tr("Zoom in"), u"zoomInButton"_s))
{
    connect(m_zoomOut, &QToolButton::clicked, this, [this] { zoomBy(-1.0); });
    connect(m_zoomIn, &QToolButton::clicked, this, [this] { zoomBy(1.0); });
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

void MapZoomButtons::zoomBy(double steps)
{
    MapViewState state = m_view.viewState();
    state.zoom = MapGeometry::clampedZoom(state.zoom + steps);
    m_view.setViewState(state, true);
}

void MapZoomButtons::place()
{
    adjustSize();
    move(parentWidget()->width() - width() - margin, margin);
    raise();
}
