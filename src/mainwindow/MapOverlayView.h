#pragma once

#include <QWidget>

class MapDelegate;
class MapOverlay;

// The transparent layer over the map that takes the mouse in the modes where a click does not
// move the map: it draws the rubber band, shows the mode's cursor and hands the left button's
// events to MapOverlay. The wheel still zooms the map, around the pointer. Hidden in the
// pointer mode, so that the map gets the mouse itself.
class MapOverlayView : public QWidget
{
    Q_OBJECT

public:
    MapOverlayView(MapOverlay &overlay, MapDelegate &delegate, QWidget *parent = nullptr);

    // Follows the overlay's mode: cursor and visibility.
    void applyMode();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    MapOverlay &m_overlay;
    MapDelegate &m_delegate;
    bool m_pressed = false;
};
