#include "OperationQueue.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

struct OperationQueue::Impl
{
    void workerLoop();
    void insertWaiting(OperationPtr operation);

    // Set before the first worker starts.
    QualityOfService qualityOfService = QualityOfService::Default;
    // Owned by mutex: everything below.
    std::mutex mutex;
    std::condition_variable wake;
    std::condition_variable idle;
    int width = 1;
    int workers = 0;
    int idleWorkers = 0;
    std::deque<OperationPtr> waiting;
    std::vector<OperationPtr> running;
    bool stopping = false;
};

OperationQueue::OperationQueue(QString name, int maxConcurrentOperationCount,
                               QualityOfService qualityOfService)
    : m_name(std::move(name))
    , m_qualityOfService(qualityOfService)
    , d(std::make_shared<Impl>())
{
    d->width = std::max(1, maxConcurrentOperationCount);
    d->qualityOfService = qualityOfService;
}

OperationQueue::~OperationQueue()
{
    {
        std::lock_guard lock(d->mutex);
        d->stopping = true;
        for (const OperationPtr &operation : d->waiting)
            operation->cancel();
        for (const OperationPtr &operation : d->running)
            operation->cancel();
    }
    d->wake.notify_all();
}

int OperationQueue::maxConcurrentOperationCount() const
{
    std::lock_guard lock(d->mutex);
    return d->width;
}

void OperationQueue::setMaxConcurrentOperationCount(int count)
{
    {
        std::lock_guard lock(d->mutex);
        d->width = std::max(1, count);
    }
    d->wake.notify_all();
}

void OperationQueue::Impl::insertWaiting(OperationPtr operation)
{
    // Behind every waiting operation of the same or a higher priority. Searched from the back:
    // most operations share one priority, so this is an append.
    const int priority = operation->queuePriority();
    auto position = waiting.end();
    while (position != waiting.begin() && (*std::prev(position))->queuePriority() < priority)
        --position;
    waiting.insert(position, std::move(operation));
}

void OperationQueue::addOperation(OperationPtr operation)
{
    Q_ASSERT(operation);
    bool startWorker = false;
    {
        std::lock_guard lock(d->mutex);
        d->insertWaiting(std::move(operation));
        startWorker
            = d->workers < d->width && d->workers < int(d->running.size() + d->waiting.size());
        if (startWorker)
            ++d->workers;
    }
    if (startWorker)
        std::thread([impl = d] { impl->workerLoop(); }).detach();
    d->wake.notify_one();
}

void OperationQueue::addOperations(const QList<OperationPtr> &operations)
{
    if (operations.isEmpty())
        return;
    int newWorkers = 0;
    {
        std::lock_guard lock(d->mutex);
        for (const OperationPtr &operation : operations) {
            Q_ASSERT(operation);
            d->insertWaiting(operation);
        }
        const int wanted = std::min(d->width, int(d->running.size() + d->waiting.size()));
        newWorkers = std::max(0, wanted - d->workers);
        d->workers += newWorkers;
    }
    for (int i = 0; i < newWorkers; ++i)
        std::thread([impl = d] { impl->workerLoop(); }).detach();
    d->wake.notify_all();
}

void OperationQueue::addOperation(std::function<void()> block)
{
    addOperation(std::make_shared<BlockOperation>(std::move(block)));
}

void OperationQueue::cancelAllOperations()
{
    std::lock_guard lock(d->mutex);
    for (const OperationPtr &operation : d->running)
        operation->cancel();
    for (const OperationPtr &operation : d->waiting)
        operation->cancel();
}

QList<OperationPtr> OperationQueue::operations() const
{
    std::lock_guard lock(d->mutex);
    QList<OperationPtr> result;
    result.reserve(qsizetype(d->running.size() + d->waiting.size()));
    for (const OperationPtr &operation : d->running)
        result.append(operation);
    for (const OperationPtr &operation : d->waiting)
        result.append(operation);
    return result;
}

int OperationQueue::operationCount() const
{
    std::lock_guard lock(d->mutex);
    return int(d->running.size() + d->waiting.size());
}

void OperationQueue::waitUntilAllOperationsAreFinished()
{
    std::unique_lock lock(d->mutex);
    d->idle.wait(lock, [&] { return d->running.empty() && d->waiting.empty(); });
}

void OperationQueue::Impl::workerLoop()
{
    ThreadQuality::applyToCurrentThread(qualityOfService);
    std::unique_lock lock(mutex);
    for (;;) {
        wake.wait(lock,
                  [&] { return stopping || (!waiting.empty() && int(running.size()) < width); });
        if (stopping && waiting.empty()) {
            --workers;
            return;
        }
        if (waiting.empty() || int(running.size()) >= width)
            continue;

        OperationPtr operation = std::move(waiting.front());
        waiting.pop_front();
        running.push_back(operation);
        lock.unlock();

        // An operation cancelled before it starts never runs its work.
        if (!operation->isCancelled()) {
            operation->m_executing.store(true, std::memory_order_release);
            operation->main();
            operation->m_executing.store(false, std::memory_order_release);
        }
        operation->m_finished.store(true, std::memory_order_release);

        lock.lock();
        running.erase(std::find(running.begin(), running.end(), operation));
        lock.unlock();
        // Released outside the lock: an operation's destructor may add work to this queue.
        operation.reset();
        lock.lock();
        if (running.empty() && waiting.empty())
            idle.notify_all();
        if (!waiting.empty())
            wake.notify_one();
    }
}
