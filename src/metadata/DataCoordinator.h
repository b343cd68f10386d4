#pragma once

#include "MetadataSource.h"
#include "platform/Operation.h"
#include "platform/OperationQueue.h"

#include <QString>

#include <functional>
#include <memory>

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
    // Forgets everything about the file and reads every source anew on the calling thread.
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
    // Told after an invalidation, so that the map drops the markers of media files.
    void setMarkersInvalidatedHandler(std::function<void()> handler);

    OperationQueue &queue() { return m_queue; }

private:
    DataCoordinator();

    OperationQueue m_queue;
    mutable std::mutex m_readersMutex;
    // Owned by m_readersMutex: the three members below.
    std::shared_ptr<MetadataSourceReader> m_readers[MetadataSources::count];
    ExifToolRetrieval m_exifToolRetrieval;
    std::function<void()> m_markersInvalidated;
};
