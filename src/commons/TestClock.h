#pragma once

#include "Clock.h"

#include <memory>
#include <vector>

// A clock whose time only moves when told to. Timers started while it is installed tick when
// advance() passes their fire date, each at its own moment and in order of fire dates.
class TestClock : public Clock
{
public:
    explicit TestClock(double currentTimeIntervalSinceReferenceDate = 0.0);

    double currentTimeIntervalSinceReferenceDate() const override { return m_now; }
    void setCurrentTimeIntervalSinceReferenceDate(double seconds) { m_now = seconds; }
    void setCurrentDate(const QDateTime &date);

    // Moves the time on by the given seconds, ticking the timers due on the way.
    void advance(double seconds);
    // Timers started on this clock that are still alive and valid.
    int pendingTimerCount() const;

protected:
    void startTimer(SmartTimerWrapper &wrapper) override;

private:
    double m_now;
    std::vector<std::weak_ptr<SmartTimerWrapper>> m_timers;
};
