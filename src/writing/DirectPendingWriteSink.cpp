#include "DirectPendingWriteSink.h"

#include "ExifWriteManager.h"
#include "metadata/DataCoordinator.h"
#include "platform/MainQueue.h"

#include <optional>

DirectPendingWriteSink::DirectPendingWriteSink()
    : m_queue(QStringLiteral("palomet.directWriteSink"))
{ }

void DirectPendingWriteSink::addPendingWrite(PendingWrite write)
{
    m_queue.async([this, write = std::move(write)] { m_pending.append(write); });
}

void DirectPendingWriteSink::clearErrors()
{
    std::lock_guard lock(m_mutex);
    m_failedPaths.clear();
}

void DirectPendingWriteSink::flushImmediately()
{
    m_queue.async([this] {
        const QList<PendingWrite> writes = std::exchange(m_pending, {});
        for (const PendingWrite &pending : writes)
            write(pending);
    });
}

QList<std::pair<QString, QString>> DirectPendingWriteSink::failedPaths() const
{
    std::lock_guard lock(m_mutex);
    return m_failedPaths;
}

void DirectPendingWriteSink::write(const PendingWrite &pending)
{
    std::optional<QString> errorMessage;
    const bool success = ExifWriteManager::shared().setTagsOfFile(
        pending.filePath, pending.tagValuePairs, errorMessage);
    if (!success) {
        std::lock_guard lock(m_mutex);
        m_failedPaths.append({pending.filePath, errorMessage.value_or(QString())});
    }
    MainQueue::post([pending, success] {
        // The store is refreshed only once the file holds the new values.
        if (success && pending.node)
            DataCoordinator::shared().invalidateData(pending.node);
        if (pending.completionHandler)
            pending.completionHandler(success);
    });
}
