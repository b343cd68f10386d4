#pragma once

#include <functional>
#include <memory>

class Clock;
class QTimer;

// A timer whose tick calls a block, started on the current Clock: a QTimer on the system clock,
// ticks driven by the test on a TestClock. It runs as long as the wrapper lives and is valid.
// Main thread only.
class SmartTimerWrapper : public std::enable_shared_from_this<SmartTimerWrapper>
{
public:
    enum class Repeats { No, Yes };
    using Block = std::function<void(SmartTimerWrapper &timer)>;

    static std::shared_ptr<SmartTimerWrapper> wrapTimer(double systemTimeInterval, Repeats repeats,
                                                        Block block);
    ~SmartTimerWrapper();
    SmartTimerWrapper(const SmartTimerWrapper &) = delete;
    SmartTimerWrapper &operator=(const SmartTimerWrapper &) = delete;

    // One tick: calls the block. A one-shot timer is no longer valid when its block runs, so the
    // block may start a new one; a repeating one moves its fire date on by its interval first.
    void execute();
    void invalidate();
    bool isValid() const { return m_valid; }

    double timeInterval() const { return m_timeInterval; }
    Repeats repeats() const { return m_repeats; }
    // When the next tick is due, on the clock that started the timer.
    double fireDate() const { return m_fireDate; }

    Block block;
    // Absent when a test clock drives the ticks.
    std::unique_ptr<QTimer> timer;

private:
    SmartTimerWrapper(double timeInterval, Repeats repeats, Block block, double fireDate);

    const double m_timeInterval;
    const Repeats m_repeats;
    double m_fireDate;
    bool m_valid = true;
};
