#pragma once

#include <QString>

#include <atomic>
#include <functional>
#include <memory>

// A unit of background work for an OperationQueue. Subclasses put their work in main() and poll
// isCancelled() where stopping early is meaningful. An operation that is cancelled before it
// starts never runs main().
class Operation : public std::enable_shared_from_this<Operation>
{
public:
    enum QueuePriority : int { VeryLow = -8, Low = -4, Normal = 0, High = 4, VeryHigh = 8 };

    Operation() = default;
    virtual ~Operation() = default;
    Operation(const Operation &) = delete;
    Operation &operator=(const Operation &) = delete;

    virtual void main() = 0;

    void cancel() { m_cancelled.store(true, std::memory_order_release); }
    bool isCancelled() const { return m_cancelled.load(std::memory_order_acquire); }
    bool isExecuting() const { return m_executing.load(std::memory_order_acquire); }
    bool isFinished() const { return m_finished.load(std::memory_order_acquire); }

    int queuePriority() const { return m_queuePriority; }
    void setQueuePriority(int priority) { m_queuePriority = priority; }

private:
    friend class OperationQueue;
    std::atomic_bool m_cancelled = false;
    std::atomic_bool m_executing = false;
    std::atomic_bool m_finished = false;
    int m_queuePriority = Normal;
};

using OperationPtr = std::shared_ptr<Operation>;

// An operation made of a plain function.
class BlockOperation : public Operation
{
public:
    explicit BlockOperation(std::function<void()> block)
        : m_block(std::move(block))
    { }
    void main() override { m_block(); }

private:
    std::function<void()> m_block;
};
