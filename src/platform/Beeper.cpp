#include "Beeper.h"

#include <atomic>

namespace {

std::atomic<Beeper *> installedBeeper = nullptr;

} // namespace

void Beeper::beep()
{
    if (Beeper *beeper = installedBeeper.load())
        beeper->makeBeep();
}

void Beeper::install(Beeper *beeper)
{
    installedBeeper.store(beeper);
}
