#include "MapToolbars.h"

#include "MapSymbols.h"
#include "location/PinAndStepperController.h"
#include "map/MapDelegate.h"
#include "map/MapOverlay.h"
#include "session/DataModel.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QPointer>
#include <QToolButton>

namespace {

QToolButton *toolButton(QWidget *parent, const QIcon &icon, const QString &label,
                        const QString &toolTip)
{
    auto *button = new QToolButton(parent);
    button->setIcon(icon);
    button->setIconSize(QSize(18, 18));
    button->setAutoRaise(true);
    button->setToolTip(toolTip);
    button->setAccessibleName(label);
    button->setFocusPolicy(Qt::TabFocus);
    if (icon.isNull())
        button->setText(label);
    return button;
}

// A small floating bar over the map, drawn on the window's background.
void styleAsFloatingBar(QFrame *bar)
{
    bar->setObjectName(QStringLiteral("mapToolbar"));
    bar->setAutoFillBackground(true);
    bar->setFrameShape(QFrame::StyledPanel);
    bar->setStyleSheet(QStringLiteral("#mapToolbar { border-radius: 6px; }"));
    auto *layout = new QHBoxLayout(bar);
    layout->setContentsMargins(3, 3, 3, 3);
    layout->setSpacing(1);
}

} // namespace

MapModeToolbar::MapModeToolbar(MapOverlay &overlay, QWidget *parent)
    : QFrame(parent)
    , m_overlay(overlay)
{
    styleAsFloatingBar(this);
    auto *group = new QButtonGroup(this);
    group->setExclusive(true);
    for (int mode = 0; mode < MapOverlayModeInfo::count; ++mode) {
        const MapOverlayModeInfo &info = MapOverlayModeInfo::of(MapOverlayMode(mode));
        QToolButton *button
            = toolButton(this, MapSymbols::icon(info.symbol, info.badge), info.label, info.toolTip);
        button->setObjectName(info.action);
        button->setCheckable(true);
        group->addButton(button, mode);
        layout()->addWidget(button);
        m_buttons[size_t(mode)] = button;
    }
    connect(group, &QButtonGroup::idClicked, this,
            [this](int mode) { m_overlay.setOverlayMode(MapOverlayMode(mode)); });
    QPointer<MapModeToolbar> self(this);
    m_overlay._overlayMode->addColdListener([self](MapOverlayMode) {
        if (self)
            self->showMode();
    });
    showMode();
}

void MapModeToolbar::showMode()
{
    for (int mode = 0; mode < MapOverlayModeInfo::count; ++mode)
        m_buttons[size_t(mode)]->setChecked(mode == int(m_overlay.overlayMode()));
}

MapZoomToolbar::MapZoomToolbar(DataModel &model, MapDelegate &delegate, QWidget *parent)
    : QFrame(parent)
    , m_model(model)
    , m_delegate(delegate)
    , m_zoomOut(toolButton(this, QIcon::fromTheme(QStringLiteral("zoom-out")), tr("Zoom Out"),
                           tr("Zoom out")))
    , m_zoomIn(toolButton(this, QIcon::fromTheme(QStringLiteral("zoom-in")), tr("Zoom In"),
                          tr("Zoom in")))
    , m_previousPin(toolButton(
          this,
          MapSymbols::icon(QStringLiteral("chevron.backward"), {}, QStringLiteral("go-previous")),
          tr("previous pin"), tr("Previous pin")))
    , m_nextPin(toolButton(
          this, MapSymbols::icon(QStringLiteral("chevron.forward"), {}, QStringLiteral("go-next")),
          tr("next pin"), tr("Next pin")))
    , m_online(toolButton(this, QIcon::fromTheme(QStringLiteral("network-workgroup")),
                          tr("Online Map"),
                          tr("Show OpenStreetMap's map, loaded from the internet; when off, "
                             "the map shows country shapes only")))
{
    styleAsFloatingBar(this);
    m_zoomOut->setObjectName(QStringLiteral("zoomOutButton"));
    m_zoomIn->setObjectName(QStringLiteral("zoomInButton"));
    m_previousPin->setObjectName(QStringLiteral("prevPinButton"));
    m_nextPin->setObjectName(QStringLiteral("nextPinButton"));
    m_online->setObjectName(QStringLiteral("onlineMapButton"));
    m_online->setCheckable(true);
    for (QToolButton *button : {m_zoomOut, m_zoomIn, m_previousPin, m_nextPin, m_online})
        layout()->addWidget(button);

    connect(m_zoomOut, &QToolButton::clicked, this, [this] { zoomBy(-1.0); });
    connect(m_zoomIn, &QToolButton::clicked, this, [this] { zoomBy(1.0); });
    connect(m_previousPin, &QToolButton::clicked, this, [this] {
        if (m_pins)
            m_pins->selectPreviousPin();
        else
            m_model.selectPreviousPin();
    });
    connect(m_nextPin, &QToolButton::clicked, this, [this] {
        if (m_pins)
            m_pins->selectNextPin();
        else
            m_model.selectNextPin();
    });
    connect(m_online, &QToolButton::toggled, this, &MapZoomToolbar::onlineToggled);

    QPointer<MapZoomToolbar> self(this);
    m_model._pins->addColdListener([self](const QList<Pin> &) {
        if (self)
            self->updatePinButtons();
    });
    updatePinButtons();
}

void MapZoomToolbar::zoomBy(double steps)
{
    MapViewState state = m_delegate.viewState();
    state.zoom = MapGeometry::clampedZoom(state.zoom + steps);
    m_delegate.setViewState(state, true);
}

void MapZoomToolbar::updatePinButtons()
{
    const bool stepping = m_model._pins->ref().size() >= 2;
    m_previousPin->setEnabled(stepping);
    m_nextPin->setEnabled(stepping);
}
