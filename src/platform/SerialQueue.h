#pragma once

#include <QString>

#include <functional>
#include <memory>

// A labelled FIFO executor that runs one block at a time, with asynchronous and synchronous
// submission. A synchronous block runs on the caller's thread once everything queued before it
// has run, as a serial dispatch queue does; nothing else runs on the queue meanwhile.
class SerialQueue
{
public:
    explicit SerialQueue(QString label);
    ~SerialQueue();

    SerialQueue(const SerialQueue &) = delete;
    SerialQueue &operator=(const SerialQueue &) = delete;

    const QString &label() const { return m_label; }

    void async(std::function<void()> block);
    void sync(const std::function<void()> &block);

    template<typename T>
    T syncValue(const std::function<T()> &block)
    {
        T result {};
        sync([&] { result = block(); });
        return result;
    }

    // True while the calling thread runs a block of this queue (used to catch self-deadlock).
    bool isCurrent() const;

private:
    struct Impl;
    const QString m_label;
    std::shared_ptr<Impl> d;
};
