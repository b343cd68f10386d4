#pragma once

// The system's alert sound, for input that cannot be acted on. The application installs one on
// QApplication::beep; tests install one that counts. Without one, nothing sounds.
class Beeper
{
public:
    virtual ~Beeper() = default;
    virtual void makeBeep() = 0;

    static void beep();
    static void install(Beeper *beeper);
};
