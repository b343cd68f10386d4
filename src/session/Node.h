#pragma once

#include "DataIsReadyObserver.h"
#include "DisplayStringWrapper.h"
#include "SortMode.h"
#include "metadata/MetadataSource.h"
#include "metadata/WrappedMetaDataValue.h"

#include <QDateTime>
#include <QList>
#include <QString>

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

class Node;
using NodePtr = std::shared_ptr<Node>;

enum class NodeComparisonResult { aBeforeB, bBeforeA, tie };

// One item of the working list: a file the user added, directly or through a folder. It holds
// what follows from its path; every other value lives in the metadata store under its path,
// and the node is the door through which the rest of the program asks for it.
class Node : public std::enable_shared_from_this<Node>
{
public:
    enum class Kind { File, Folder, Ghost };

    virtual ~Node() = default;
    Node(const Node &) = delete;
    Node &operator=(const Node &) = delete;

    // Fixed after construction; readable from any thread.
    const QString name;
    const QString smartName;
    const QString absolutePath;
    const QString fileName;
    const QString fileNameUpToFirstPeriod;
    const QString parent;
    const QString absoluteParentPath;
    const QString relativePath;

    virtual Kind kind() const = 0;

    // The path with its numbers padded; computed on first use, as only identity needs it.
    QString smartAbsolutePath() const;

    // Read once, the first time asked; absent when the file has no tags attribute.
    std::optional<QString> tags() const;

    // Never blocks on a read: an unread source answers Waiting and is read in the background.
    DisplayStringWrapper getDisplayString(const QString &key) const;
    // These read the key's source on the calling thread when it has not been read yet.
    QString getStringValueSync(const QString &key) const;
    WrappedMetaDataValue getWrappedValueSync(const QString &key) const;
    QDateTime getDateValueSync(const QString &key) const;
    qint64 getIntValueSync(const QString &key) const;

    void addDataObserver(const std::shared_ptr<DataIsReadyObserver> &observer, const QString &key);
    void remove(const DataIsReadyObserver *observer, MetadataSource source);
    // Tells the source's live observers, in the order added, on the main thread.
    void signalDataIsNowReady(MetadataSource source) const;

    bool operator==(const Node &other) const
    {
        return smartAbsolutePath() == other.smartAbsolutePath();
    }

    static NodeComparisonResult compare(const Node &a, const Node &b, SortMode mode);
    static int caseInsensitiveStringCompare(const QString &a, const QString &b);
    // Medium date and short time, as the preview table shows dates.
    static QString formatDisplayDate(const QDateTime &date);
    static QDateTime distantPast();

protected:
    Node(const QString &name, const QString &absolutePath, const QString &relativePath);
    // Starts the node's first metadata read; called by the factories once the node is shared.
    void scheduleInitialRead();

private:
    std::optional<MetadataSource> sourceForKey(const QString &key) const;
    bool sourceHasBeenRead(MetadataSource source) const;
    WrappedMetaDataValue storedValueReadingNow(const QString &key, MetadataSource source) const;

    mutable std::mutex smartPathLock;
    mutable std::optional<QString> m_smartAbsolutePath;

    // tags: computed lazily without a lock; a race merely computes it twice.
    mutable std::atomic_bool m_tagsComputed = false;
    mutable std::optional<QString> m_tags;

    // Owned by dataReadyObserverListLock: dataReadyObservers.
    mutable std::mutex dataReadyObserverListLock;
    std::array<QList<WeakDataIsReadyObserverReference>, MetadataSources::count> dataReadyObservers;
};

class FileNode final : public Node
{
public:
    static std::shared_ptr<FileNode> create(const QString &name, const QString &absolutePath,
                                            const QString &relativePath);
    Kind kind() const override { return Kind::File; }

private:
    using Node::Node;
};

// A folder item; the scan as the engine drives it never makes one.
class FolderNode final : public Node
{
public:
    static std::shared_ptr<FolderNode> create(const QString &name, const QString &absolutePath,
                                              const QString &relativePath);
    Kind kind() const override { return Kind::Folder; }
    QList<NodePtr> contents;

private:
    using Node::Node;
};

// An empty marker in the hierarchy; nothing creates one.
class GhostNode final : public Node
{
public:
    Kind kind() const override { return Kind::Ghost; }

private:
    using Node::Node;
};
