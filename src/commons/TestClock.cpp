#include "TestClock.h"

#include "SmartTimerWrapper.h"

#include <algorithm>

TestClock::TestClock(double currentTimeIntervalSinceReferenceDate)
    : m_now(currentTimeIntervalSinceReferenceDate)
{ }

void TestClock::setCurrentDate(const QDateTime &date)
{
    m_now = timeIntervalSinceReferenceDate(date);
}

void TestClock::advance(double seconds)
{
    const double target = m_now + std::max(seconds, 0.0);
    for (;;) {
        std::erase_if(m_timers, [](const std::weak_ptr<SmartTimerWrapper> &weak) {
            const auto timer = weak.lock();
            return !timer || !timer->isValid();
        });
        std::shared_ptr<SmartTimerWrapper> next;
        for (const auto &weak : m_timers) {
            const auto timer = weak.lock();
            if (timer->fireDate() <= target && (!next || timer->fireDate() < next->fireDate()))
                next = timer;
        }
        if (!next)
            break;
        m_now = std::max(m_now, next->fireDate());
        next->execute();
    }
    m_now = target;
}

int TestClock::pendingTimerCount() const
{
    return int(std::count_if(m_timers.cbegin(), m_timers.cend(), [](const auto &weak) {
        const auto timer = weak.lock();
        return timer && timer->isValid();
    }));
}

void TestClock::startTimer(SmartTimerWrapper &wrapper)
{
    m_timers.push_back(wrapper.weak_from_this());
}
