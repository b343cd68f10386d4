#include "MapOverlayView.h"

#include "map/MapDelegate.h"
#include "map/MapOverlay.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

namespace {

Qt::CursorShape cursorShape(MapCursor cursor)
{
    switch (cursor) {
    case MapCursor::crosshair:
        return Qt::CrossCursor;
    case MapCursor::arrow:
        return Qt::ArrowCursor;
    case MapCursor::pointingHand:
        return Qt::PointingHandCursor;
    case MapCursor::operationNotAllowed:
        return Qt::ForbiddenCursor;
    }
    return Qt::ArrowCursor;
}

// The accent blue of markers and selections.
QColor systemBlue(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() < 128 ? QColor(0x0a, 0x84, 0xff)
                                                             : QColor(0x00, 0x7a, 0xff);
}

} // namespace

MapOverlayView::MapOverlayView(MapOverlay &overlay, MapDelegate &delegate, QWidget *parent)
    : QWidget(parent)
    , m_overlay(overlay)
    , m_delegate(delegate)
{
    setAttribute(Qt::WA_NoSystemBackground);
    setAutoFillBackground(false);
    setMouseTracking(false);
    m_overlay._overlayMode->addColdListener([this](MapOverlayMode) { applyMode(); });
    m_overlay.displayRevision->addColdListener([this](int) { update(); });
    applyMode();
}

void MapOverlayView::applyMode()
{
    setCursor(cursorShape(m_overlay.cursor()));
    setVisible(m_overlay.takesMouse());
    if (isVisible())
        raise();
    update();
}

void MapOverlayView::paintEvent(QPaintEvent *)
{
    if (!m_overlay.selectionRect)
        return;
    QPainter painter(this);
    QColor blue = systemBlue(palette());
    QColor fill = blue;
    fill.setAlphaF(0.2);
    blue.setAlphaF(0.8);
    painter.fillRect(*m_overlay.selectionRect, fill);
    painter.setPen(QPen(blue, 1.0));
    painter.drawRect(m_overlay.selectionRect->adjusted(0.5, 0.5, -0.5, -0.5));
}

void MapOverlayView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    m_pressed = true;
    m_overlay.mouseDown(event->position());
}

void MapOverlayView::mouseMoveEvent(QMouseEvent *event)
{
    if (m_pressed && (event->buttons() & Qt::LeftButton))
        m_overlay.mouseDragged(event->position());
}

void MapOverlayView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_pressed)
        return QWidget::mouseReleaseEvent(event);
    m_pressed = false;
    m_overlay.mouseUp(event->position());
}

void MapOverlayView::wheelEvent(QWheelEvent *event)
{
    const double steps = event->angleDelta().y() / 120.0;
    if (steps == 0.0)
        return;
    const MapViewState state = m_delegate.viewState();
    m_delegate.setViewState(
        MapGeometry::zoomedAround(state, event->position(), state.zoom + steps * 0.5), false);
    event->accept();
}
