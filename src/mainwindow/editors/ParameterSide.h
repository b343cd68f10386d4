#pragma once

#include "bricks/BuildDirective.h"

#include <memory>

class DataModel;
class OutputEngine;
class PinAndStepperController;

// The fragments of the parameter side, top to bottom: the scan settings, the sort modes, the
// stepper, the GPS editor, the four location fields, the pin panel and the output settings.
// The main window stacks them; directive() gives them in one stack of their own, with their
// captions in one column.
class ParameterSide
{
public:
    static BuildDirectiveList fragments(DataModel &model, std::shared_ptr<OutputEngine> engine,
                                        PinAndStepperController &controller);
    static BuildDirectiveList directive(DataModel &model, std::shared_ptr<OutputEngine> engine,
                                        PinAndStepperController &controller);
};
