#pragma once

#include "MetadataSource.h"
#include "platform/Operation.h"
#include "platform/OperationQueue.h"

#include <QHash>
#include <QString>

#include <functional>
#include <memory>
#include <mutex>

class Node;
using NodePtr = std::shared_ptr<Node>;

// Reads one source of one file and stores what it finds under that source.
class MetadataSourceReader
{
public:
    virtual ~MetadataSourceReader() = default;
    virtual void retrieveAndStoreAllTagsFor(const QString &path) = 0;
};

// Runs the background reads: one operation reads one source for one file, stores the values
// and the source's "retrieved" marker, and tells the node's observers. The same read runs
// synchronously for the getters that need a value now; both routes share one routine per source.
class DataCoordinator
{
public:
    static DataCoordinator &shared();

    // Adds a read of the source; calls add up, and a read finds its marker set and does nothing.
    void retrieveDataAsynchronously(const NodePtr &node, MetadataSource source);
    // After a write: forgets the file's values and its map marker at once, then reads it anew on
    // the queue, ahead of the waiting reads. The basic information and the embedded metadata are
    // read again, and of the other sources those that had been read; each once. The node's
    // observers are told on the main thread. From this call until the re-read is over, the file
    // is marked in FileOperationLock, which holds its next write back. A re-read that has not
    // started yet serves any further invalidation of the file.
    void invalidateData(const NodePtr &node);

    // The synchronous read of the operation class that serves the source.
    static void retrieveInformation(const Node &node, MetadataSource source);
    static std::shared_ptr<Operation> makeOperation(const NodePtr &node, MetadataSource source);

    // Readers of the image, media and search-index sources (3, 4, 31). Until one is installed its
    // source reads nothing and is marked as read, as for a file the reader cannot read.
    void setReader(MetadataSource source, std::shared_ptr<MetadataSourceReader> reader);
    std::shared_ptr<MetadataSourceReader> reader(MetadataSource source) const;
    // The embedded-metadata read (source 2 and ExifTool's groups), which stores its own marker,
    // derives the status flags and signals the node.
    using ExifToolRetrieval = std::function<void(const Node &)>;
    void setExifToolRetrieval(ExifToolRetrieval retrieval);
    ExifToolRetrieval exifToolRetrieval() const;

    OperationQueue &queue() { return m_queue; }

private:
    friend class RereadOperation;
    DataCoordinator();

    // The sources a re-read covers, one bit each.
    using SourceSet = quint64;
    static constexpr SourceSet sourceBit(MetadataSource source)
    {
        return SourceSet(1) << int(source);
    }
    // The re-read of the path starts: the sources it is to read. Later invalidations queue a
    // re-read of their own.
    SourceSet rereadStarting(const QString &path);
    // The re-read of the path is over; the last one outstanding releases the file for writing.
    void rereadFinished(const QString &path);

    OperationQueue m_queue;
    mutable std::mutex m_readersMutex;
    // Owned by m_readersMutex: the two members below.
    std::shared_ptr<MetadataSourceReader> m_readers[MetadataSources::count];
    ExifToolRetrieval m_exifToolRetrieval;

    std::mutex m_rereadsMutex;
    // Owned by m_rereadsMutex: re-reads queued and not started, by path, with their sources; and
    // the count of re-reads queued or running per path, which holds the file's mark in
    // FileOperationLock from the first to the last.
    QHash<QString, SourceSet> m_queuedRereads;
    QHash<QString, int> m_outstandingRereads;
};
