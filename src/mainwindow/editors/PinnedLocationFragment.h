#pragma once

#include "bricks/walls/WallDirectives.h"

#include <QObject>
#include <QPointer>

class CoordinateFieldWall;
class DataModel;
class PinAndStepperController;

// The pin panel of the parameter side: the current pin's name with the buttons that step
// through the pins, centre the map on the current one and delete it; the pinned position with
// its sign and direction chips and its two notations; the four place names that the geocoder
// gives for it; and one Apply button for each of the five values, which writes it to the
// selected files. Main thread only.
class PinnedLocationFragment : public QObject
{
    Q_OBJECT

public:
    static BuildDirectivesNamespace::FragmentWall directive(DataModel &model,
                                                            PinAndStepperController &controller);

    PinnedLocationFragment(DataModel &model, PinAndStepperController &controller,
                           QWidget *fragment);

    void sync();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Value
    {
        std::shared_ptr<StraightReadWriteVariable<QString>> text;
        QPointer<QWidget> label;
        QPointer<QWidget> applyButton;
    };

    DataModel &m_model;
    PinAndStepperController &m_controller;
    QPointer<QWidget> m_fragment;
    QPointer<CoordinateFieldWall> m_latitudeWall, m_longitudeWall;
    QPointer<QWidget> m_previousButton, m_nextButton, m_centerButton, m_deleteButton;
    QPointer<QWidget> m_copyDMSButton, m_copyDMMButton, m_applyGPSButton;
    QList<Value> m_values;
};
