#pragma once

#include "MapFloatingBar.h"

class DataModel;
class MapDelegate;
class PinAndStepperController;

// Zoom, the previous and next pin, and the choice of the online map.
class MapZoomToolbar : public MapFloatingBar
{
    Q_OBJECT

public:
    MapZoomToolbar(DataModel &model, MapDelegate &delegate, QWidget *parent = nullptr);

    // The pins step through the window's controller, which also centres the map on them.
    void setPinController(PinAndStepperController *controller) { m_pins = controller; }
    QToolButton *previousPinButton() const { return m_previousPin; }
    QToolButton *nextPinButton() const { return m_nextPin; }
    QToolButton *onlineButton() const { return m_online; }

signals:
    void onlineToggled(bool online);

private:
    void updatePinButtons();

    DataModel &m_model;
    PinAndStepperController *m_pins = nullptr;
    QToolButton *m_previousPin = nullptr;
    QToolButton *m_nextPin = nullptr;
    QToolButton *m_online = nullptr;
};
