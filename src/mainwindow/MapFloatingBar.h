#pragma once

#include "map/MapGeometry.h"

#include <QFrame>

#include <functional>

class QToolButton;

// A small bar of tool buttons that floats over the map: a rounded panel in the window's colour,
// so that it reads on tiles and country shapes alike, in light and dark themes.
class MapFloatingBar : public QFrame
{
    Q_OBJECT

public:
    explicit MapFloatingBar(QWidget *parent = nullptr);

    // Null until addZoomButtons() has made them.
    QToolButton *zoomOutButton() const { return m_zoomOut; }
    QToolButton *zoomInButton() const { return m_zoomIn; }

protected:
    void paintEvent(QPaintEvent *event) override;
    // A tool button of the bar; its label stands in when there is no icon.
    QToolButton *addButton(const QIcon &icon, const QString &label, const QString &toolTip,
                           const QString &objectName);
    // "Zoom Out" and "Zoom In", a whole level each, on whatever keeps the map's camera: the page
    // itself, or the delegate, which keeps it while the page is being made.
    template<typename View>
    void addZoomButtons(View &view)
    {
        addZoomButtons([&view](double steps) {
            MapViewState state = view.viewState();
            state.zoom = MapGeometry::clampedZoom(state.zoom + steps);
            view.setViewState(state, true);
        });
    }

private:
    void addZoomButtons(const std::function<void(double)> &zoomBy);

    QToolButton *m_zoomOut = nullptr;
    QToolButton *m_zoomIn = nullptr;
};
