#pragma once

#include "PendingWriteSink.h"
#include "platform/SerialQueue.h"

#include <QList>
#include <QString>

#include <mutex>
#include <utility>

// Writes each added edit on its own serial queue through ExifWriteManager, one file after the
// other, then has the file read again and calls the handler on the main thread. No merging of
// edits: each one is a write of its own.
class DirectPendingWriteSink : public PendingWriteSink
{
public:
    DirectPendingWriteSink();

    void addPendingWrite(PendingWrite write) override;
    void clearErrors() override;
    void flushImmediately() override;

    // Failures since the last clearErrors(), as path and message.
    QList<std::pair<QString, QString>> failedPaths() const;

private:
    void write(const PendingWrite &pending);

    // Writes run here; adding and flushing are posted to it, so a flush sees every write added
    // before it.
    SerialQueue m_queue;
    mutable std::mutex m_mutex;
    // Owned by m_mutex.
    QList<std::pair<QString, QString>> m_failedPaths;
    // Owned by m_queue.
    QList<PendingWrite> m_pending;
};
