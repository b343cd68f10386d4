#pragma once

#include "MapFloatingBar.h"

#include <array>

class MapOverlay;

// The toolbar of the map's mouse modes: rubber band, pointer, drop pin, select pin, delete pin.
// Exactly the button of the current mode is on.
class MapModeToolbar : public MapFloatingBar
{
    Q_OBJECT

public:
    explicit MapModeToolbar(MapOverlay &overlay, QWidget *parent = nullptr);
    QToolButton *button(int mode) const { return m_buttons.at(size_t(mode)); }

private:
    void showMode();

    MapOverlay &m_overlay;
    std::array<QToolButton *, 5> m_buttons {};
};
