#include "Clock.h"

#include "SmartTimerWrapper.h"

#include <QTimer>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

Clock *s_installed = nullptr;

} // namespace

Clock::~Clock()
{
    if (s_installed == this)
        s_installed = nullptr;
}

double Clock::currentTimeIntervalSinceReferenceDate() const
{
    return timeIntervalSinceReferenceDate(QDateTime::currentDateTimeUtc());
}

QDateTime Clock::currentDate() const
{
    const qint64 ms = qint64(std::llround(currentTimeIntervalSinceReferenceDate() * 1000.0));
    return referenceDate().addMSecs(ms);
}

QDateTime Clock::referenceDate()
{
    return QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
}

double Clock::timeIntervalSinceReferenceDate(const QDateTime &date)
{
    return double(referenceDate().msecsTo(date)) / 1000.0;
}

Clock &Clock::current()
{
    static Clock systemClock;
    return s_installed ? *s_installed : systemClock;
}

void Clock::setCurrent(Clock *clock)
{
    s_installed = clock;
}

void Clock::startTimer(SmartTimerWrapper &wrapper)
{
    // QTimer counts in int milliseconds: longer intervals tick early and are simply re-armed by
    // whoever checks the calendar, which every user of long timers here does.
    const double ms
        = std::clamp(wrapper.timeInterval() * 1000.0, 0.0, double(std::numeric_limits<int>::max()));
    wrapper.timer = std::make_unique<QTimer>();
    wrapper.timer->setSingleShot(wrapper.repeats() == SmartTimerWrapper::Repeats::No);
    wrapper.timer->setTimerType(ms < 2000.0 ? Qt::PreciseTimer : Qt::CoarseTimer);
    QObject::connect(wrapper.timer.get(), &QTimer::timeout, wrapper.timer.get(),
                     [&wrapper] { wrapper.execute(); });
    wrapper.timer->start(int(std::lround(ms)));
}
