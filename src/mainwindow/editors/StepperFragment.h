#pragma once

#include "bricks/walls/WallDirectives.h"

#include <QCoreApplication>

class DataModel;
class PinAndStepperController;

// The stepper of the parameter side: what it steps by (single items, or groups of one
// sub-location, city, province or country), the previous and next buttons, and the label that
// says what is selected. Main thread only.
class StepperFragment
{
    Q_DECLARE_TR_FUNCTIONS(StepperFragment)

public:
    static BuildDirectivesNamespace::FragmentWall directive(DataModel &model,
                                                            PinAndStepperController &controller);
};
