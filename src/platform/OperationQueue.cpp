#include "OperationQueue.h"

#include <algorithm>

OperationQueue::OperationQueue(QString name, int maxConcurrentOperationCount,
                               QualityOfService qualityOfService)
    : m_name(std::move(name))
    , m_qualityOfService(qualityOfService)
    , m_width(std::max(1, maxConcurrentOperationCount))
{ }

OperationQueue::~OperationQueue()
{
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
        for (const OperationPtr &operation : m_waiting)
            operation->cancel();
    }
    m_wake.notify_all();
    for (std::thread &worker : m_workers)
        worker.join();
}

int OperationQueue::maxConcurrentOperationCount() const
{
    std::lock_guard lock(m_mutex);
    return m_width;
}

void OperationQueue::setMaxConcurrentOperationCount(int count)
{
    {
        std::lock_guard lock(m_mutex);
        m_width = std::max(1, count);
    }
    m_wake.notify_all();
}

void OperationQueue::insertWaiting(OperationPtr operation)
{
    // Behind every waiting operation of the same or a higher priority.
    const int priority = operation->queuePriority();
    auto position = std::find_if(m_waiting.begin(), m_waiting.end(), [&](const OperationPtr &o) {
        return o->queuePriority() < priority;
    });
    m_waiting.insert(position, std::move(operation));
}

void OperationQueue::addOperation(OperationPtr operation)
{
    Q_ASSERT(operation);
    {
        std::lock_guard lock(m_mutex);
        insertWaiting(std::move(operation));
        const int busyOrIdleWorkers = int(m_workers.size());
        if (busyOrIdleWorkers < m_width
            && busyOrIdleWorkers < int(m_running.size()) + int(m_waiting.size()))
            m_workers.emplace_back([this] { workerLoop(); });
    }
    m_wake.notify_one();
}

void OperationQueue::addOperation(std::function<void()> block)
{
    addOperation(std::make_shared<BlockOperation>(std::move(block)));
}

void OperationQueue::cancelAllOperations()
{
    std::lock_guard lock(m_mutex);
    for (const OperationPtr &operation : m_running)
        operation->cancel();
    for (const OperationPtr &operation : m_waiting)
        operation->cancel();
}

QList<OperationPtr> OperationQueue::operations() const
{
    std::lock_guard lock(m_mutex);
    QList<OperationPtr> result;
    result.reserve(qsizetype(m_running.size() + m_waiting.size()));
    for (const OperationPtr &operation : m_running)
        result.append(operation);
    for (const OperationPtr &operation : m_waiting)
        result.append(operation);
    return result;
}

int OperationQueue::operationCount() const
{
    std::lock_guard lock(m_mutex);
    return int(m_running.size() + m_waiting.size());
}

void OperationQueue::waitUntilAllOperationsAreFinished()
{
    std::unique_lock lock(m_mutex);
    m_idle.wait(lock, [&] { return m_running.empty() && m_waiting.empty(); });
}

void OperationQueue::workerLoop()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [&] {
            return m_stopping || (!m_waiting.empty() && int(m_running.size()) < m_width);
        });
        if (m_stopping && m_waiting.empty())
            return;
        if (m_waiting.empty() || int(m_running.size()) >= m_width)
            continue;

        OperationPtr operation = std::move(m_waiting.front());
        m_waiting.pop_front();
        m_running.push_back(operation);
        lock.unlock();

        if (!operation->isCancelled()) {
            operation->m_executing.store(true, std::memory_order_release);
            operation->main();
            operation->m_executing.store(false, std::memory_order_release);
        }
        operation->m_finished.store(true, std::memory_order_release);

        lock.lock();
        m_running.erase(std::find(m_running.begin(), m_running.end(), operation));
        lock.unlock();
        // Released outside the lock: an operation's destructor may add work to this queue.
        operation.reset();
        lock.lock();
        if (m_running.empty() && m_waiting.empty())
            m_idle.notify_all();
        if (!m_waiting.empty())
            m_wake.notify_one();
    }
}
