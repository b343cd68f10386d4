#pragma once

#include <QFrame>

#include <array>

class DataModel;
class MapDelegate;
class MapOverlay;
class PinAndStepperController;
class QToolButton;

// The toolbar of the map's mouse modes: rubber band, pointer, drop pin, select pin, delete pin.
// Exactly the button of the current mode is on.
class MapModeToolbar : public QFrame
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

// Zoom, the previous and next pin, and the choice of the online map.
class MapZoomToolbar : public QFrame
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
