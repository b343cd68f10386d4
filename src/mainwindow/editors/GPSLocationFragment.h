#pragma once

#include "bricks/walls/WallDirectives.h"

#include <QObject>
#include <QPointer>

class CoordinateFieldWall;
class GPSCoordinateComponent;
class QAbstractButton;
class SmartTextField;

// The GPS editor of the parameter side: the caption, the latitude and longitude fields with
// their sign and direction chips, the position in degrees, minutes and seconds and in degrees
// and decimal minutes with a copy button each, and the Apply, add-pin and reset buttons. The
// fragment draws what GPSCoordinateComponent decides and hands the user's typing, Return, Escape
// and clicks to it. Main thread only.
class GPSLocationFragment : public QObject
{
    Q_OBJECT

public:
    // The fragment for a parameter stack. Activating the built assembly connects it to the
    // component; it then follows the component for as long as the views exist.
    static BuildDirectivesNamespace::FragmentWall directive(GPSCoordinateComponent &component);

    // Made by the activation, as a child of the built fragment.
    GPSLocationFragment(GPSCoordinateComponent &component, QWidget *fragment);

    // Brings the views in line with the component's state.
    void sync();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void connectField(SmartTextField *field, bool isLatitude);

    GPSCoordinateComponent &m_component;
    QPointer<QWidget> m_fragment;
    QPointer<CoordinateFieldWall> m_latitudeWall, m_longitudeWall;
    QPointer<SmartTextField> m_latitudeField, m_longitudeField;
    QPointer<QWidget> m_copyDMSButton, m_copyDMMButton;
    QPointer<QWidget> m_applyButton, m_addFlagButton;
};
