#include "Debouncer.h"

#include <QCoreApplication>
#include <QTimer>

#include <cmath>

Debouncer::Debouncer(double delay)
    : m_delay(delay)
{ }

Debouncer::~Debouncer()
{
    if (m_workItem)
        m_workItem->cancelled = true;
}

void Debouncer::run(std::function<void()> action)
{
    if (m_workItem)
        m_workItem->cancelled = true;
    auto item = std::make_shared<WorkItem>(WorkItem {std::move(action), false});
    m_workItem = item;
    const int delayMs = int(std::lround(m_delay * 1000.0));
    QTimer::singleShot(delayMs, QCoreApplication::instance(), [item] {
        if (!item->cancelled)
            item->action();
    });
}
