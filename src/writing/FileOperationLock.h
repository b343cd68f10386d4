#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

#include <shared_mutex>

// Keeps the re-read of a file after a write apart from the next write to it. The re-read marks
// its path while it runs; the write engine looks for marks before it starts a batch and holds
// marked files back. One way only: a read never waits for a write.
//
// A plain set, not a count: overlapping retrievals of one path share one mark, and the first
// end clears it.
class FileOperationLock
{
public:
    static FileOperationLock &shared();

    void beginMetadataRetrieval(const QString &path);
    void endMetadataRetrieval(const QString &path);

    // Those of the given paths that are being read now, in the order given.
    QStringList anyMetadataRetrievalActive(const QStringList &paths) const;

private:
    FileOperationLock() = default;

    // A concurrent queue with barrier writes, as a readers-writer lock: lookups share it, and
    // begin and end take it alone. They hold it only to change the set, so they return at once
    // and the mark is visible to any lookup that follows.
    mutable std::shared_mutex m_queue;
    // Owned by m_queue.
    QSet<QString> m_filesBeingRead;
};
