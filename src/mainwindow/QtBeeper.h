#pragma once

#include "platform/Beeper.h"

// The system's alert sound through QApplication::beep.
class QtBeeper : public Beeper
{
public:
    void makeBeep() override;
};
