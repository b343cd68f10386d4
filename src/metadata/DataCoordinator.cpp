#include "DataCoordinator.h"

#include "MetadataStorage.h"
#include "RetrievalOperations.h"
#include "map/MediaFileMarkers.h"
#include "platform/MainQueue.h"
#include "session/Node.h"
#include "writing/FileOperationLock.h"

DataCoordinator &DataCoordinator::shared()
{
    // Never destroyed: background reads may still be running while the program exits.
    static DataCoordinator *instance = new DataCoordinator;
    return *instance;
}

DataCoordinator::DataCoordinator()
    : m_queue(QStringLiteral("DataCoordinator"), 1, QualityOfService::UserInitiated)
{ }

void DataCoordinator::setReader(MetadataSource source, std::shared_ptr<MetadataSourceReader> reader)
{
    std::lock_guard lock(m_readersMutex);
    m_readers[int(source)] = std::move(reader);
}

std::shared_ptr<MetadataSourceReader> DataCoordinator::reader(MetadataSource source) const
{
    std::lock_guard lock(m_readersMutex);
    return m_readers[int(source)];
}

void DataCoordinator::setExifToolRetrieval(ExifToolRetrieval retrieval)
{
    std::lock_guard lock(m_readersMutex);
    m_exifToolRetrieval = std::move(retrieval);
}

DataCoordinator::ExifToolRetrieval DataCoordinator::exifToolRetrieval() const
{
    std::lock_guard lock(m_readersMutex);
    return m_exifToolRetrieval;
}

std::shared_ptr<Operation> DataCoordinator::makeOperation(const NodePtr &node,
                                                          MetadataSource source)
{
    switch (source) {
    case MetadataSource::Node:
    case MetadataSource::Computed:
        return nullptr;
    case MetadataSource::Basic: {
        auto operation = std::make_shared<GetBasicInformationOperation>(node);
        operation->setQueuePriority(Operation::High);
        return operation;
    }
    case MetadataSource::ImageIO:
        return std::make_shared<GetImageIOInformationOperation>(node);
    case MetadataSource::AVKit:
        return std::make_shared<GetAVKitInformationOperation>(node);
    case MetadataSource::Spotlight:
        return std::make_shared<GetSpotlightInformationOperation>(node);
    default:
        return std::make_shared<GetExifToolInformationOperation>(node);
    }
}

void DataCoordinator::retrieveDataAsynchronously(const NodePtr &node, MetadataSource source)
{
    if (auto operation = makeOperation(node, source))
        m_queue.addOperation(std::move(operation));
}

void DataCoordinator::retrieveInformation(const Node &node, MetadataSource source)
{
    switch (source) {
    case MetadataSource::Node:
    case MetadataSource::Computed:
        return;
    case MetadataSource::Basic:
        GetBasicInformationOperation::retrieveInformation(node);
        return;
    case MetadataSource::ImageIO:
        GetImageIOInformationOperation::retrieveInformation(node);
        return;
    case MetadataSource::AVKit:
        GetAVKitInformationOperation::retrieveInformation(node);
        return;
    case MetadataSource::Spotlight:
        GetSpotlightInformationOperation::retrieveInformation(node);
        return;
    default:
        GetExifToolInformationOperation::retrieveInformation(node);
        return;
    }
}

void DataCoordinator::invalidateData(const NodePtr &node)
{
    MetadataStorage &storage = MetadataStorage::shared();
    const QString &path = node->absolutePath;
    // What the write may have changed is always read again; of the other readers' sources only
    // those that had been read: one never asked for stays unread until someone asks.
    SourceSet sources
        = sourceBit(MetadataSource::Basic) | sourceBit(MetadataSource::ExifToolGeneric);
    for (MetadataSource source :
         {MetadataSource::ImageIO, MetadataSource::AVKit, MetadataSource::Spotlight}) {
        if (storage.boolValueExistsAndIsTrue(path, QStringLiteral("retrieved"), source))
            sources |= sourceBit(source);
    }
    bool queueReread = false;
    {
        std::lock_guard lock(m_rereadsMutex);
        const auto queued = m_queuedRereads.find(path);
        if (queued != m_queuedRereads.end()) {
            *queued |= sources;
        } else {
            m_queuedRereads.insert(path, sources);
            if (m_outstandingRereads[path]++ == 0)
                FileOperationLock::shared().beginMetadataRetrieval(path);
            queueReread = true;
        }
    }
    // With values and markers gone, views wait for the re-read and are told when it is over.
    storage.removeAllValues(path);
    // On the main thread the marker goes before the re-read can add it again; from elsewhere
    // the re-read is queued from there, after the marker has gone.
    MainQueue::runOrPost([this, node, queueReread] {
        if (MediaFileMarkers *markers = MediaFileMarkers::installed())
            markers->removeMediaFileMarker(node->absolutePath);
        if (!queueReread)
            return;
        auto operation = std::make_shared<RereadOperation>(node);
        operation->setQueuePriority(Operation::High);
        m_queue.addOperation(std::move(operation));
    });
}

DataCoordinator::SourceSet DataCoordinator::rereadStarting(const QString &path)
{
    std::lock_guard lock(m_rereadsMutex);
    return m_queuedRereads.take(path);
}

void DataCoordinator::rereadFinished(const QString &path)
{
    std::lock_guard lock(m_rereadsMutex);
    const auto outstanding = m_outstandingRereads.find(path);
    if (outstanding == m_outstandingRereads.end() || --*outstanding > 0)
        return;
    m_outstandingRereads.erase(outstanding);
    FileOperationLock::shared().endMetadataRetrieval(path);
}
