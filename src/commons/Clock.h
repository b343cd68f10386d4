#pragma once

#include <QDateTime>

class SmartTimerWrapper;

// The source of the current time and of timers. Code that schedules by the calendar (launch
// bookkeeping, the daily update check) asks Clock::current(), so that a test can install a
// TestClock and move time forward instead of waiting for it.
class Clock
{
public:
    virtual ~Clock();

    // Seconds since 1 January 2001, 00:00 UTC.
    virtual double currentTimeIntervalSinceReferenceDate() const;
    QDateTime currentDate() const;

    static QDateTime referenceDate();
    static double timeIntervalSinceReferenceDate(const QDateTime &date);

    // The installed clock; the system's until a test installs its own. Main thread only.
    static Clock &current();
    // Installs a clock (absent for the system's); the caller keeps it alive while installed.
    static void setCurrent(Clock *clock);

protected:
    friend class SmartTimerWrapper;
    // Starts the ticks of a new timer; the system clock gives it a QTimer.
    virtual void startTimer(SmartTimerWrapper &wrapper);
};
