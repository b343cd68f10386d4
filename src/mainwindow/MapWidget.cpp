#include "MapWidget.h"

#include "MapModeToolbar.h"
#include "MapOverlayView.h"
#include "MapSearchField.h"
#include "MapZoomToolbar.h"
#include "location/PinAndStepperController.h"
#include "map/MapDelegate.h"
#include "map/MapOverlay.h"
#include "map/MapSearch.h"
#include "platform/UserDefaults.h"

#include <QChildEvent>
#include <QToolButton>

namespace {

constexpr int floatingMargin = 8;

} // namespace

MapWidget::MapWidget(DataModel &model, MapDelegate &delegate, MapWebView::Options options,
                     Geocoder &geocoder, QWidget *parent, PageCreation pageCreation)
    : QWidget(parent)
    , m_model(model)
    , m_delegate(delegate)
    , m_options(std::move(options))
    , m_overlay(std::make_unique<MapOverlay>(model, delegate))
    , m_search(std::make_unique<MapSearch>(delegate, geocoder))
{
    setMinimumSize(320, 240);
    m_overlayView = new MapOverlayView(*m_overlay, delegate, this);
    m_modeToolbar = new MapModeToolbar(*m_overlay, this);
    m_zoomToolbar = new MapZoomToolbar(model, delegate, this);
    m_searchField = new MapSearchField(*m_search, this);
    m_zoomToolbar->onlineButton()->setChecked(m_options.online);
    connect(m_zoomToolbar, &MapZoomToolbar::onlineToggled, this, [this](bool online) {
        m_options.online = online;
        if (m_mapView)
            m_mapView->setOnline(online);
        UserDefaults::standard().setObject(online, MapWebView::onlineSettingKey());
    });

    MapOverlay *overlay = m_overlay.get();
    delegate.setOverlayModeSource([overlay] { return overlay->overlayMode(); });
    if (pageCreation == PageCreation::now)
        createPage();
    placeFloatingViews();
}

void MapWidget::createPage()
{
    if (m_mapView)
        return;
    m_mapView = new MapWebView(m_delegate, m_options, this);
    m_mapView->setGeometry(rect());
    // Under the overlay and the floating views, which were there first.
    m_mapView->lower();
    m_mapView->show();
    // The delegate kept its markers meanwhile and hands the page the whole scene.
    m_delegate.setMapView(m_mapView);
}

MapWidget::~MapWidget()
{
    m_delegate.setOverlayModeSource(nullptr);
    if (m_mapView && m_delegate.mapView() == m_mapView)
        m_delegate.setMapView(nullptr);
    // The views listen to the overlay and the search, which go before the children would.
    delete std::exchange(m_searchField, nullptr);
    delete std::exchange(m_modeToolbar, nullptr);
    delete std::exchange(m_overlayView, nullptr);
}

void MapWidget::setPinController(PinAndStepperController *controller)
{
    m_overlay->setPinWorkflow(controller);
    m_zoomToolbar->setPinController(controller);
}

void MapWidget::switchToRubberBandMode()
{
    m_overlay->setOverlayMode(MapOverlayMode::areaFileSelector);
    // The toolbars stay above the band.
    m_modeToolbar->raise();
    m_zoomToolbar->raise();
    m_searchField->raise();
}

void MapWidget::switchToPointerMode()
{
    m_overlay->setOverlayMode(MapOverlayMode::fileSelector);
}

void MapWidget::switchToDropPinMode()
{
    m_overlay->setOverlayMode(MapOverlayMode::addPin);
}

void MapWidget::switchToSelectPinMode()
{
    m_overlay->setOverlayMode(MapOverlayMode::selectPin);
}

void MapWidget::switchToDeletePinMode()
{
    m_overlay->setOverlayMode(MapOverlayMode::deletePin);
}

void MapWidget::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placeFloatingViews();
}

void MapWidget::childEvent(QChildEvent *event)
{
    QWidget::childEvent(event);
    // A window may take a toolbar or the field away, or give it back.
    if (event->type() == QEvent::ChildAdded || event->type() == QEvent::ChildRemoved)
        placeFloatingViews();
}

void MapWidget::placeFloatingViews()
{
    // Children come one by one while the widget is being made.
    if (!m_overlayView || !m_modeToolbar || !m_zoomToolbar || !m_searchField)
        return;
    if (m_mapView)
        m_mapView->setGeometry(rect());
    m_overlayView->setGeometry(rect());
    int left = floatingMargin;
    int right = width() - floatingMargin;
    if (m_modeToolbar->parent() == this) {
        m_modeToolbar->adjustSize();
        m_modeToolbar->move(left, floatingMargin);
        m_modeToolbar->raise();
        left += m_modeToolbar->width() + floatingMargin;
    }
    if (m_zoomToolbar->parent() == this) {
        m_zoomToolbar->adjustSize();
        m_zoomToolbar->move(right - m_zoomToolbar->width(), floatingMargin);
        m_zoomToolbar->raise();
        right -= m_zoomToolbar->width() + floatingMargin;
    }
    if (m_searchField->parent() == this) {
        const int available = right - left;
        const int fieldWidth = std::clamp(available, 160, 360);
        const int toolbarHeight = m_modeToolbar->sizeHint().height();
        const int fieldHeight = m_searchField->sizeHint().height();
        // Between the toolbars when there is room, under them when not.
        if (available >= 200)
            m_searchField->setGeometry(left + (available - fieldWidth) / 2,
                                       floatingMargin + (toolbarHeight - fieldHeight) / 2,
                                       fieldWidth, fieldHeight);
        else
            m_searchField->setGeometry(floatingMargin, 2 * floatingMargin + toolbarHeight,
                                       std::min(360, width() - 2 * floatingMargin), fieldHeight);
        m_searchField->raise();
    }
}
