#include "RetrievalOperations.h"

#include "DataCoordinator.h"
#include "MetadataStorage.h"
#include "platform/ByteCountFormatter.h"
#include "platform/FileAttributes.h"
#include "session/Node.h"

#include <QFile>

#include <sys/stat.h>

namespace {

const QString retrievedKey = QStringLiteral("retrieved");

// Stores the marker before the node is told, so that whoever finds it also finds the values.
void markReadAndSignal(const Node &node, MetadataSource source)
{
    MetadataStorage::shared().store(node.absolutePath, source, retrievedKey, true);
    node.signalDataIsNowReady(source);
}

void readWithInstalledReader(const Node &node, MetadataSource source)
{
    if (const auto reader = DataCoordinator::shared().reader(source))
        reader->retrieveAndStoreAllTagsFor(node.absolutePath);
    markReadAndSignal(node, source);
}

} // namespace

RetrievalOperation::RetrievalOperation(NodePtr node, MetadataSource markerSource,
                                       MetadataSource readSource)
    : node(std::move(node))
    , m_markerSource(markerSource)
    , m_readSource(readSource)
{ }

void RetrievalOperation::main()
{
    if (isCancelled())
        return;
    if (MetadataStorage::shared().boolValueExistsAndIsTrue(node->absolutePath, retrievedKey,
                                                           m_markerSource))
        return;
    DataCoordinator::retrieveInformation(*node, m_readSource);
}

GetBasicInformationOperation::GetBasicInformationOperation(NodePtr node)
    : RetrievalOperation(std::move(node), MetadataSource::Basic, MetadataSource::Basic)
{ }

void GetBasicInformationOperation::retrieveInformation(const Node &node)
{
    MetadataStorage &storage = MetadataStorage::shared();
    const QString &path = node.absolutePath;
    const MetadataSource basic = MetadataSource::Basic;
    struct stat info = {};
    // The link itself, not what it points at.
    if (::lstat(QFile::encodeName(path).constData(), &info) == 0) {
        if (const std::optional<QDateTime> created = FileAttributes::creationDate(path))
            storage.store(path, basic, QStringLiteral("creation_date"), *created);
        const qint64 modifiedMs
            = qint64(info.st_mtim.tv_sec) * 1000 + info.st_mtim.tv_nsec / 1000000;
        storage.store(path, basic, QStringLiteral("modification_date"),
                      QDateTime::fromMSecsSinceEpoch(modifiedMs, Qt::UTC));
        const qint64 size = info.st_size;
        storage.store(path, basic, QStringLiteral("size"), size);
        storage.store(path, basic, QStringLiteral("size_in_bytes"), QString::number(size));
        storage.store(path, basic, QStringLiteral("human_readable_size"),
                      ByteCountFormatter::stringFromByteCount(size));
        storage.store(path, basic, QStringLiteral("size_in_kb"),
                      QString::number((size + 1023) / 1024));
        storage.store(path, basic, QStringLiteral("size_in_mb"),
                      QString::number((size + 1048575) / 1048576));
    }
    markReadAndSignal(node, basic);
}

GetExifToolInformationOperation::GetExifToolInformationOperation(NodePtr node)
    : RetrievalOperation(std::move(node), MetadataSource::Spotlight,
                         MetadataSource::ExifToolGeneric)
{ }

void GetExifToolInformationOperation::retrieveInformation(const Node &node)
{
    if (const auto retrieval = DataCoordinator::shared().exifToolRetrieval()) {
        retrieval(node);
        return;
    }
    markReadAndSignal(node, MetadataSource::ExifToolGeneric);
}

GetImageIOInformationOperation::GetImageIOInformationOperation(NodePtr node)
    : RetrievalOperation(std::move(node), MetadataSource::ImageIO, MetadataSource::ImageIO)
{ }

void GetImageIOInformationOperation::retrieveInformation(const Node &node)
{
    readWithInstalledReader(node, MetadataSource::ImageIO);
}

GetAVKitInformationOperation::GetAVKitInformationOperation(NodePtr node)
    : RetrievalOperation(std::move(node), MetadataSource::AVKit, MetadataSource::AVKit)
{ }

void GetAVKitInformationOperation::retrieveInformation(const Node &node)
{
    readWithInstalledReader(node, MetadataSource::AVKit);
}

GetSpotlightInformationOperation::GetSpotlightInformationOperation(NodePtr node)
    : RetrievalOperation(std::move(node), MetadataSource::Spotlight, MetadataSource::Spotlight)
{ }

void GetSpotlightInformationOperation::retrieveInformation(const Node &node)
{
    readWithInstalledReader(node, MetadataSource::Spotlight);
}

RereadOperation::RereadOperation(NodePtr node)
    : node(std::move(node))
{ }

void RereadOperation::main()
{
    DataCoordinator &coordinator = DataCoordinator::shared();
    const QString &path = node->absolutePath;
    const DataCoordinator::SourceSet sources = coordinator.rereadStarting(path);
    // Anything stored since the invalidation came from a read that may have seen the file
    // before it changed.
    MetadataStorage::shared().removeAllValues(path);
    for (MetadataSource source :
         {MetadataSource::Basic, MetadataSource::ExifToolGeneric, MetadataSource::ImageIO,
          MetadataSource::AVKit, MetadataSource::Spotlight}) {
        if (sources & DataCoordinator::sourceBit(source))
            DataCoordinator::retrieveInformation(*node, source);
    }
    coordinator.rereadFinished(path);
}
