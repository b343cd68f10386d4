#pragma once

#include "CheckBoxBrick.h"

// An on-off switch; on this platform a check box with the switch's wording.
class SwitchBrick : public CheckBoxBrick
{
    Q_OBJECT

public:
    using CheckBoxBrick::CheckBoxBrick;
};

using SwitchBrickBinding = CheckBoxBrickBinding;
