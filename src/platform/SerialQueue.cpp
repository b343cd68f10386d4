#include "SerialQueue.h"

#include <QtGlobal>

#include <vector>

namespace {
// The queues whose blocks the current thread is running, innermost last.
thread_local std::vector<const SerialQueue *> t_currentQueues;

struct CurrentQueueScope
{
    explicit CurrentQueueScope(const SerialQueue *queue) { t_currentQueues.push_back(queue); }
    ~CurrentQueueScope() { t_currentQueues.pop_back(); }
};
} // namespace

// A synchronous block waiting in line: the worker hands the queue over to the caller's thread
// and waits until the caller gives it back.
struct SyncHandOver
{
    std::mutex mutex;
    std::condition_variable changed;
    bool callerMayRun = false;
    bool callerDone = false;
};

SerialQueue::SerialQueue(QString label)
    : m_label(std::move(label))
{
    m_worker = std::thread([this] { workerLoop(); });
}

SerialQueue::~SerialQueue()
{
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_all();
    m_worker.join();
}

bool SerialQueue::isCurrent() const
{
    for (const SerialQueue *queue : t_currentQueues) {
        if (queue == this)
            return true;
    }
    return false;
}

void SerialQueue::runGuarded(const std::function<void()> &block)
{
    CurrentQueueScope scope(this);
    block();
}

void SerialQueue::async(std::function<void()> block)
{
    {
        std::lock_guard lock(m_mutex);
        m_tasks.push_back(Task {std::move(block), nullptr});
    }
    m_wake.notify_one();
}

void SerialQueue::sync(const std::function<void()> &block)
{
    if (isCurrent())
        qFatal("SerialQueue \"%s\": sync from a block of the same queue would deadlock",
               qPrintable(m_label));

    std::unique_lock lock(m_mutex);
    if (!m_busy && m_tasks.empty()) {
        // Fast path: the queue is idle, so the caller takes it over directly.
        m_busy = true;
        lock.unlock();
        runGuarded(block);
        lock.lock();
        m_busy = false;
        lock.unlock();
        m_wake.notify_one();
        return;
    }

    // Shared with the worker, which may still hold it after the caller has returned.
    auto handOver = std::make_shared<SyncHandOver>();
    m_tasks.push_back(Task {{}, handOver});
    lock.unlock();
    m_wake.notify_one();

    std::unique_lock waitLock(handOver->mutex);
    handOver->changed.wait(waitLock, [&] { return handOver->callerMayRun; });
    waitLock.unlock();
    runGuarded(block);
    waitLock.lock();
    handOver->callerDone = true;
    handOver->changed.notify_all();
}

void SerialQueue::workerLoop()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [&] { return m_stopping || (!m_busy && !m_tasks.empty()); });
        if (m_tasks.empty() && m_stopping)
            return;
        if (m_busy || m_tasks.empty())
            continue;
        Task task = std::move(m_tasks.front());
        m_tasks.pop_front();
        m_busy = true;
        lock.unlock();

        if (task.handOver) {
            std::unique_lock handLock(task.handOver->mutex);
            task.handOver->callerMayRun = true;
            task.handOver->changed.notify_all();
            task.handOver->changed.wait(handLock, [&] { return task.handOver->callerDone; });
        } else {
            runGuarded(task.block);
        }

        lock.lock();
        m_busy = false;
    }
}
