#include "DataCoordinator.h"

#include "MetadataStorage.h"
#include "RetrievalOperations.h"
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

void DataCoordinator::setMarkersInvalidatedHandler(std::function<void()> handler)
{
    std::lock_guard lock(m_readersMutex);
    m_markersInvalidated = std::move(handler);
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
    for (MetadataSource source : MetadataSources::allCases())
        storage.store(path, source, QStringLiteral("retrieved"), false);
    storage.removeAllValues(path);
    std::function<void()> markersInvalidated;
    {
        std::lock_guard lock(m_readersMutex);
        markersInvalidated = m_markersInvalidated;
    }
    if (markersInvalidated)
        markersInvalidated();
    // Every source is read again, the embedded one once per group it serves: the reads are
    // idempotent, and the write path waits for the lock's release before touching the file.
    FileOperationLock::shared().beginMetadataRetrieval(path);
    for (MetadataSource source : MetadataSources::allCases())
        retrieveInformation(*node, source);
    FileOperationLock::shared().endMetadataRetrieval(path);
}
