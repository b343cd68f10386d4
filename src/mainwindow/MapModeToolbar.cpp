#include "MapModeToolbar.h"

#include "MapSymbols.h"
#include "map/MapOverlay.h"

#include <QButtonGroup>
#include <QPointer>
#include <QToolButton>

MapModeToolbar::MapModeToolbar(MapOverlay &overlay, QWidget *parent)
    : MapFloatingBar(parent)
    , m_overlay(overlay)
{
    auto *group = new QButtonGroup(this);
    group->setExclusive(true);
    for (int mode = 0; mode < MapOverlayModeInfo::count; ++mode) {
        const MapOverlayModeInfo &info = MapOverlayModeInfo::of(MapOverlayMode(mode));
        QToolButton *button = addButton(MapSymbols::icon(info.symbol, info.badge), info.label,
                                        info.toolTip, info.action);
        button->setCheckable(true);
        group->addButton(button, mode);
        m_buttons[size_t(mode)] = button;
    }
    connect(group, &QButtonGroup::idClicked, this,
            [this](int mode) { m_overlay.setOverlayMode(MapOverlayMode(mode)); });
    // The overlay outlives the bar.
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
