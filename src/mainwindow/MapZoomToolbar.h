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
    QToolButton *zoomInButton() const { return m_zoomIn; }
    QToolButton *zoomOutButton() const { return m_zoomOut; }
    QToolButton *previousPinButton() const { return m_previousPin; }
    QToolButton *nextPinButton() const { return m_nextPin; }
    QToolButton *onlineButton() const { return m_online; }

signals:
    void onlineToggled(bool online);

private:
    void zoomBy(double steps);
    void updatePinButtons();

    DataModel &m_model;
    MapDelegate &m_delegate;
    PinAndStepperController *m_pins = nullptr;
    QToolButton *m_zoomOut;
    QToolButton *m_zoomIn;
    QToolButton *m_previousPin;
    QToolButton *m_nextPin;
    QToolButton *m_online;
};
