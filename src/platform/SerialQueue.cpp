#include "SerialQueue.h"

#include "QualityOfService.h"

#include <QtGlobal>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
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

struct SerialQueue::Impl
{
    struct Task
    {
        std::function<void()> block;
        std::shared_ptr<SyncHandOver> handOver;
    };

    void workerLoop();

    const SerialQueue *owner = nullptr;
    // Owned by mutex: everything below.
    std::mutex mutex;
    std::condition_variable wake;
    std::deque<Task> tasks;
    bool busy = false;
    bool stopping = false;
    bool exited = false;
    bool workerWaiting = false;
    std::condition_variable exitedChanged;
    std::thread::id workerId;
};

SerialQueue::SerialQueue(QString label)
    : m_label(std::move(label))
    , d(std::make_shared<Impl>())
{
    d->owner = this;
    // The worker shares the state, so the queue may be dropped from one of its own blocks.
    std::thread worker([impl = d] { impl->workerLoop(); });
    d->workerId = worker.get_id();
    worker.detach();
}

SerialQueue::~SerialQueue()
{
    std::unique_lock lock(d->mutex);
    d->stopping = true;
    d->wake.notify_all();
    // Blocks queued before the end still run against a live owner. Only when the queue is
    // dropped from one of its own blocks can it not wait for itself.
    if (std::this_thread::get_id() != d->workerId)
        d->exitedChanged.wait(lock, [&] { return d->exited; });
    d->owner = nullptr;
}

bool SerialQueue::isCurrent() const
{
    for (const SerialQueue *queue : t_currentQueues) {
        if (queue == this)
            return true;
    }
    return false;
}

void SerialQueue::async(std::function<void()> block)
{
    bool wakeWorker = false;
    {
        std::lock_guard lock(d->mutex);
        d->tasks.push_back(Impl::Task {std::move(block), nullptr});
        // A busy worker takes the block by itself; waking it costs a context switch.
        wakeWorker = d->workerWaiting;
    }
    if (wakeWorker)
        d->wake.notify_one();
}

void SerialQueue::sync(const std::function<void()> &block)
{
    if (isCurrent())
        qFatal("SerialQueue \"%s\": sync from a block of the same queue would deadlock",
               qPrintable(m_label));

    std::unique_lock lock(d->mutex);
    if (!d->busy && d->tasks.empty()) {
        // Fast path: the queue is idle, so the caller takes it over directly.
        d->busy = true;
        lock.unlock();
        {
            CurrentQueueScope scope(this);
            block();
        }
        lock.lock();
        d->busy = false;
        const bool wakeWorker = !d->tasks.empty();
        lock.unlock();
        if (wakeWorker)
            d->wake.notify_one();
        return;
    }

    // Shared with the worker, which may still hold it after the caller has returned.
    auto handOver = std::make_shared<SyncHandOver>();
    d->tasks.push_back(Impl::Task {{}, handOver});
    lock.unlock();
    d->wake.notify_one();

    std::unique_lock waitLock(handOver->mutex);
    handOver->changed.wait(waitLock, [&] { return handOver->callerMayRun; });
    waitLock.unlock();
    {
        CurrentQueueScope scope(this);
        block();
    }
    waitLock.lock();
    handOver->callerDone = true;
    handOver->changed.notify_all();
}

void SerialQueue::Impl::workerLoop()
{
    // Serial queues serve the main thread's own requests, whoever happened to create them.
    ThreadQuality::applyToCurrentThread(QualityOfService::UserInteractive);
    std::unique_lock lock(mutex);
    for (;;) {
        workerWaiting = true;
        wake.wait(lock, [&] { return stopping || (!busy && !tasks.empty()); });
        workerWaiting = false;
        if (tasks.empty() && stopping) {
            exited = true;
            exitedChanged.notify_all();
            return;
        }
        if (busy || tasks.empty())
            continue;
        Task task = std::move(tasks.front());
        tasks.pop_front();
        busy = true;
        const SerialQueue *queue = owner;
        lock.unlock();

        if (task.handOver) {
            std::unique_lock handLock(task.handOver->mutex);
            task.handOver->callerMayRun = true;
            task.handOver->changed.notify_all();
            task.handOver->changed.wait(handLock, [&] { return task.handOver->callerDone; });
        } else {
            CurrentQueueScope scope(queue);
            task.block();
            // Released before the lock is taken again: a block's captures may hold the queue.
            task.block = nullptr;
        }

        lock.lock();
        busy = false;
    }
}
