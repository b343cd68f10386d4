#include "FileOperationLock.h"

#include <mutex>

FileOperationLock &FileOperationLock::shared()
{
    static FileOperationLock instance;
    return instance;
}

void FileOperationLock::beginMetadataRetrieval(const QString &path)
{
    std::unique_lock lock(m_queue);
    m_filesBeingRead.insert(path);
}

void FileOperationLock::endMetadataRetrieval(const QString &path)
{
    std::unique_lock lock(m_queue);
    m_filesBeingRead.remove(path);
}

QStringList FileOperationLock::anyMetadataRetrievalActive(const QStringList &paths) const
{
    std::shared_lock lock(m_queue);
    QStringList active;
    for (const QString &path : paths) {
        if (m_filesBeingRead.contains(path))
            active << path;
    }
    return active;
}
