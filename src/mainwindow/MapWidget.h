#pragma once

#include "MapWebView.h"

#include <QWidget>

#include <memory>

class DataModel;
class Geocoder;
class MapDelegate;
class MapModeToolbar;
class MapOverlay;
class MapOverlayView;
class MapSearch;
class MapSearchField;
class MapZoomToolbar;
class PinAndStepperController;

// The map with everything that belongs to it: the page, the overlay of the mouse modes, the two
// toolbars and the search field, which float over the map until a window places them elsewhere.
// The delegate is the application's and outlives the widget; there is only ever one map view,
// and a window moves this widget between its walls.
class MapWidget : public QWidget
{
    Q_OBJECT

public:
    // When the page is made: at once, or when the owner calls createPage(). Starting the web
    // engine takes about a second, which a window spends better after its first paint.
    enum class PageCreation { now, onRequest };

    MapWidget(DataModel &model, MapDelegate &delegate, MapWebView::Options options,
              Geocoder &geocoder, QWidget *parent = nullptr,
              PageCreation pageCreation = PageCreation::now);
    ~MapWidget() override;

    MapDelegate &delegate() const { return m_delegate; }
    MapOverlay &overlay() const { return *m_overlay; }
    MapSearch &search() const { return *m_search; }
    // Absent until the page is made.
    MapWebView *mapView() const { return m_mapView; }
    MapOverlayView *overlayView() const { return m_overlayView; }
    MapModeToolbar *modeToolbar() const { return m_modeToolbar; }
    MapZoomToolbar *zoomToolbar() const { return m_zoomToolbar; }
    MapSearchField *searchField() const { return m_searchField; }

    // Makes the page under the overlay, once.
    void createPage();

    // Pins are added and stepped through the window's controller.
    void setPinController(PinAndStepperController *controller);

    void switchToRubberBandMode();
    void switchToPointerMode();
    void switchToDropPinMode();
    void switchToSelectPinMode();
    void switchToDeletePinMode();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void childEvent(QChildEvent *event) override;

private:
    void placeFloatingViews();

    DataModel &m_model;
    MapDelegate &m_delegate;
    MapWebView::Options m_options;
    std::unique_ptr<MapOverlay> m_overlay;
    std::unique_ptr<MapSearch> m_search;
    MapWebView *m_mapView = nullptr;
    MapOverlayView *m_overlayView = nullptr;
    MapModeToolbar *m_modeToolbar = nullptr;
    MapZoomToolbar *m_zoomToolbar = nullptr;
    MapSearchField *m_searchField = nullptr;
};
