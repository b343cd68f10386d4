#pragma once

#include "DataIsReadyObserver.h"
#include "DisplayStringWrapper.h"
#include "SortMode.h"
#include "metadata/MetadataSource.h"
#include "metadata/WrappedMetaDataValue.h"

#include <QDateTime>
#include <QList>
#include <QMutex>
#include <QString>

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>

class Node;
class Operation;
using NodePtr = std::shared_ptr<Node>;

enum class NodeComparisonResult { aBeforeB, bBeforeA, tie };

// Nodes whose strings a new node shares instead of deriving them again: one in the same folder
// (parent, absoluteParentPath) and one with the same name (name and the names derived from it).
struct NodeRelatives
{
    const Node *sameFolder = nullptr;
    const Node *sameName = nullptr;
};

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
    // getDisplayString of each node from index `from` on, in order, until visit answers false.
    // The store is asked once for a whole run of nodes rather than once for each, which is what
    // makes a selection of a hundred thousand items affordable.
    static void visitDisplayStrings(
        const QList<std::shared_ptr<Node>> &nodes, qsizetype from, const QString &key,
        const std::function<bool(qsizetype index, const DisplayStringWrapper &value)> &visit);
    // These read the key's source on the calling thread when it has not been read yet.
    QString getStringValueSync(const QString &key) const;
    WrappedMetaDataValue getWrappedValueSync(const QString &key) const;
    QDateTime getDateValueSync(const QString &key) const;
    qint64 getIntValueSync(const QString &key) const;

    void addDataObserver(const std::shared_ptr<DataIsReadyObserver> &observer, const QString &key);
    // For values outside the catalogue, such as the "XMPPresent" flag, named by their source.
    void addDataObserver(const std::shared_ptr<DataIsReadyObserver> &observer,
                         MetadataSource source);
    // True once the source has been read for this file.
    bool hasBeenRead(MetadataSource source) const { return sourceHasBeenRead(source); }
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

    // Queues the first metadata read of each node, in order, in one go. The scanner makes the
    // nodes of a folder without their reads and hands them over here.
    static void scheduleInitialReads(const QList<NodePtr> &nodes);

protected:
    Node(const QString &name, const QString &absolutePath, const QString &relativePath,
         NodeRelatives relatives);
    // Starts the node's first metadata read; called by the factories once the node is shared.
    void scheduleInitialRead();
    static std::shared_ptr<Operation> initialReadOperation(const NodePtr &node);

private:
    std::optional<MetadataSource> sourceForKey(const QString &key) const;
    // The display strings of the node's own fields ("name", "absolute_path", ...), absent for
    // a key of the store.
    std::optional<DisplayStringWrapper> ownDisplayString(const QString &key) const;
    bool sourceHasBeenRead(MetadataSource source) const;
    WrappedMetaDataValue storedValueReadingNow(const QString &key, MetadataSource source) const;

    // Pointer-sized locks: a scan makes a node per file.
    mutable QMutex smartPathLock;
    mutable std::optional<QString> m_smartAbsolutePath;

    // tags: computed lazily without a lock; a race merely computes it twice.
    mutable std::atomic_bool m_tagsComputed = false;
    mutable std::optional<QString> m_tags;

    // Owned by dataReadyObserverListLock: dataReadyObservers. Made on the first registration:
    // most nodes never get an observer, and an absent list is an empty one.
    using ObserverLists
        = std::array<QList<WeakDataIsReadyObserverReference>, MetadataSources::count>;
    mutable QMutex dataReadyObserverListLock;
    std::unique_ptr<ObserverLists> dataReadyObservers;
};

class FileNode final : public Node
{
    struct Key
    {
        explicit Key() = default;
    };

public:
    static std::shared_ptr<FileNode> create(const QString &name, const QString &absolutePath,
                                            const QString &relativePath);
    // The node alone: its first read is left to the caller, see scheduleInitialReads.
    static std::shared_ptr<FileNode> createWithoutRead(const QString &name,
                                                       const QString &absolutePath,
                                                       const QString &relativePath,
                                                       NodeRelatives relatives);
    Kind kind() const override { return Kind::File; }

    // Public for make_shared only; the key keeps it to the factories.
    FileNode(Key, const QString &name, const QString &absolutePath, const QString &relativePath,
             NodeRelatives relatives)
        : Node(name, absolutePath, relativePath, relatives)
    { }
};

// A folder item; the scan as the engine drives it never makes one.
class FolderNode final : public Node
{
    struct Key
    {
        explicit Key() = default;
    };

public:
    static std::shared_ptr<FolderNode> create(const QString &name, const QString &absolutePath,
                                              const QString &relativePath);
    static std::shared_ptr<FolderNode> createWithoutRead(const QString &name,
                                                         const QString &absolutePath,
                                                         const QString &relativePath,
                                                         NodeRelatives relatives);
    Kind kind() const override { return Kind::Folder; }
    QList<NodePtr> contents;

    FolderNode(Key, const QString &name, const QString &absolutePath, const QString &relativePath,
               NodeRelatives relatives)
        : Node(name, absolutePath, relativePath, relatives)
    { }
};

// An empty marker in the hierarchy; nothing creates one.
class GhostNode final : public Node
{
public:
    Kind kind() const override { return Kind::Ghost; }

private:
    using Node::Node;
};
