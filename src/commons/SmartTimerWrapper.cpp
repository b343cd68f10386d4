#include "SmartTimerWrapper.h"

#include "Clock.h"

#include <QTimer>

#include <algorithm>

std::shared_ptr<SmartTimerWrapper> SmartTimerWrapper::wrapTimer(double systemTimeInterval,
                                                                Repeats repeats, Block block)
{
    Clock &clock = Clock::current();
    // A repeating timer without an interval would tick without end.
    const double interval = std::max(systemTimeInterval, repeats == Repeats::Yes ? 0.001 : 0.0);
    std::shared_ptr<SmartTimerWrapper> wrapper(
        new SmartTimerWrapper(interval, repeats, std::move(block),
                              clock.currentTimeIntervalSinceReferenceDate() + interval));
    clock.startTimer(*wrapper);
    return wrapper;
}

SmartTimerWrapper::SmartTimerWrapper(double timeInterval, Repeats repeats, Block block,
                                     double fireDate)
    : block(std::move(block))
    , m_timeInterval(timeInterval)
    , m_repeats(repeats)
    , m_fireDate(fireDate)
{ }

SmartTimerWrapper::~SmartTimerWrapper()
{
    // The wrapper may go while its QTimer is still emitting the tick that made the last owner
    // let go, so the QTimer is silenced now and deleted by the event loop.
    if (timer) {
        timer->stop();
        timer->disconnect();
        timer.release()->deleteLater();
    }
}

void SmartTimerWrapper::execute()
{
    if (!m_valid)
        return;
    const std::shared_ptr<SmartTimerWrapper> keepAlive = shared_from_this();
    if (m_repeats == Repeats::Yes)
        m_fireDate += m_timeInterval;
    else
        invalidate();
    if (block)
        block(*this);
}

void SmartTimerWrapper::invalidate()
{
    m_valid = false;
    if (timer)
        timer->stop();
}
