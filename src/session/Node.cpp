#include "Node.h"

#include "StringHelpers.h"
#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"
#include "metadata/RetrievalOperations.h"
#include "metadata/TagManager.h"
#include "platform/ByteCountFormatter.h"
#include "platform/DateFormatter.h"
#include "platform/FileAttributes.h"
#include "platform/MainQueue.h"

namespace {

QString deletingPathExtension(const QString &name)
{
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? name.left(dot) : name;
}

// With a single extension it is the name without it, so the string already made is shared.
QString upToFirstPeriod(const QString &name, const QString &withoutExtension)
{
    const qsizetype dot = name.indexOf(QLatin1Char('.'));
    if (dot < 0)
        return name;
    if (dot > 0 && dot == withoutExtension.size())
        return withoutExtension;
    return name.left(dot);
}

QString parentFolderName(const QString &absolutePath)
{
    const QString folder = StringHelpers::deletingLastPathComponent(absolutePath);
    return folder.isEmpty() ? QString() : StringHelpers::lastPathComponent(folder);
}

const QString retrievedKey = QStringLiteral("retrieved");

// The words of the two stored status keys. An integer that names no status, and any other
// value, is shown as for an ordinary key.
std::optional<DisplayStringWrapper> dataAvailabilityText(const WrappedMetaDataValue &value)
{
    if (value.kind() != WrappedMetaDataValue::Kind::NSInteger)
        return std::nullopt;
    switch (value.integerValue()) {
    case 0:
        return DisplayStringWrapper::present(QStringLiteral("none"));
    case 1:
        return DisplayStringWrapper::present(QStringLiteral("complete"));
    case 2:
        return DisplayStringWrapper::present(QStringLiteral("incomplete"));
    case 3:
        return DisplayStringWrapper::present(QStringLiteral("divergent"));
    default:
        return std::nullopt;
    }
}

} // namespace

Node::Node(const QString &name, const QString &absolutePath, const QString &relativePath,
           NodeRelatives relatives)
    : name(relatives.sameName ? relatives.sameName->name : name)
    , smartName(relatives.sameName ? relatives.sameName->smartName
                                   : StringHelpers::stringByExpandingAllNumberGroups(name))
    , absolutePath(absolutePath)
    , fileName(relatives.sameName ? relatives.sameName->fileName : deletingPathExtension(name))
    , fileNameUpToFirstPeriod(relatives.sameName ? relatives.sameName->fileNameUpToFirstPeriod
                                                 : upToFirstPeriod(name, fileName))
    , parent(relatives.sameFolder ? relatives.sameFolder->parent : parentFolderName(absolutePath))
    , absoluteParentPath(relatives.sameFolder
                             ? relatives.sameFolder->absoluteParentPath
                             : StringHelpers::deletingLastPathComponent(absolutePath))
    , relativePath(relativePath)
{
    Q_ASSERT(!relatives.sameName || relatives.sameName->name == name);
    Q_ASSERT(!relatives.sameFolder
             || absoluteParentPath == StringHelpers::deletingLastPathComponent(absolutePath));
}

QString Node::smartAbsolutePath() const
{
    std::lock_guard lock(smartPathLock);
    if (!m_smartAbsolutePath)
        m_smartAbsolutePath = StringHelpers::stringByExpandingAllNumberGroups(absolutePath);
    return *m_smartAbsolutePath;
}

OperationPtr Node::initialReadOperation(const NodePtr &node)
{
    auto operation = std::make_shared<GetExifToolInformationOperation>(node);
    operation->setQueuePriority(Operation::Normal);
    return operation;
}

void Node::scheduleInitialRead()
{
    // Reading starts while the scan is still running.
    DataCoordinator::shared().queue().addOperation(initialReadOperation(shared_from_this()));
}

void Node::scheduleInitialReads(const QList<NodePtr> &nodes)
{
    QList<OperationPtr> operations;
    operations.reserve(nodes.size());
    for (const NodePtr &node : nodes)
        operations.append(initialReadOperation(node));
    DataCoordinator::shared().queue().addOperations(operations);
}

std::shared_ptr<FileNode> FileNode::create(const QString &name, const QString &absolutePath,
                                           const QString &relativePath)
{
    auto node = createWithoutRead(name, absolutePath, relativePath, {});
    node->scheduleInitialRead();
    return node;
}

std::shared_ptr<FileNode> FileNode::createWithoutRead(const QString &name,
                                                      const QString &absolutePath,
                                                      const QString &relativePath,
                                                      NodeRelatives relatives)
{
    return std::make_shared<FileNode>(Key(), name, absolutePath, relativePath, relatives);
}

std::shared_ptr<FolderNode> FolderNode::create(const QString &name, const QString &absolutePath,
                                               const QString &relativePath)
{
    auto node = createWithoutRead(name, absolutePath, relativePath, {});
    node->scheduleInitialRead();
    return node;
}

std::shared_ptr<FolderNode> FolderNode::createWithoutRead(const QString &name,
                                                          const QString &absolutePath,
                                                          const QString &relativePath,
                                                          NodeRelatives relatives)
{
    return std::make_shared<FolderNode>(Key(), name, absolutePath, relativePath, relatives);
}

std::optional<QString> Node::tags() const
{
    if (!m_tagsComputed.load(std::memory_order_acquire)) {
        std::optional<QString> computed;
        if (const std::optional<QStringList> list = FileAttributes::tags(absolutePath)) {
            QStringList trimmed;
            for (const QString &tag : *list) {
                QString t = tag;
                while (t.startsWith(QLatin1Char('\n')) || t.startsWith(QLatin1Char('\r')))
                    t.remove(0, 1);
                while (t.endsWith(QLatin1Char('\n')) || t.endsWith(QLatin1Char('\r')))
                    t.chop(1);
                trimmed.append(t);
            }
            computed = trimmed.join(QLatin1String(", "));
        }
        m_tags = computed;
        m_tagsComputed.store(true, std::memory_order_release);
    }
    return m_tags;
}

std::optional<MetadataSource> Node::sourceForKey(const QString &key) const
{
    return TagManager::shared().sourceForKey(key);
}

bool Node::sourceHasBeenRead(MetadataSource source) const
{
    return MetadataStorage::shared().boolValueExistsAndIsTrue(absolutePath, retrievedKey, source);
}

WrappedMetaDataValue Node::storedValueReadingNow(const QString &key, MetadataSource source) const
{
    if (!sourceHasBeenRead(source))
        DataCoordinator::retrieveInformation(*this, source);
    return MetadataStorage::shared().getWrappedValue(absolutePath, key, source);
}

namespace {

// How a stored value reads in a view.
DisplayStringWrapper displayStringOfStoredValue(const QString &key,
                                                const WrappedMetaDataValue &value)
{
    if (key == QLatin1String("GPSDataAvailable") || key == QLatin1String("IPTCDataComplete")) {
        if (const std::optional<DisplayStringWrapper> status = dataAvailabilityText(value))
            return *status;
    }
    switch (value.kind()) {
    case WrappedMetaDataValue::Kind::StringValue:
        return DisplayStringWrapper::present(
            StringHelpers::withEncodedLineBreaksAndTabs(value.stringValue()));
    case WrappedMetaDataValue::Kind::DateValue:
        return DisplayStringWrapper::present(Node::formatDisplayDate(value.dateValue()));
    case WrappedMetaDataValue::Kind::BoolValue:
        return DisplayStringWrapper::present(value.boolValue() ? QStringLiteral("true")
                                                               : QStringLiteral("false"));
    case WrappedMetaDataValue::Kind::NSInteger:
        return DisplayStringWrapper::present(
            ByteCountFormatter::stringFromByteCount(value.integerValue()));
    case WrappedMetaDataValue::Kind::None:
        break;
    }
    return DisplayStringWrapper::notPresent();
}

} // namespace

std::optional<DisplayStringWrapper> Node::ownDisplayString(const QString &key) const
{
    if (key == QLatin1String("name"))
        return DisplayStringWrapper::present(name);
    if (key == QLatin1String("absolute_path"))
        return DisplayStringWrapper::present(absolutePath);
    if (key == QLatin1String("full_path_name_length"))
        return DisplayStringWrapper::present(
            QString::number(StringHelpers::characterCount(absolutePath)));
    if (key == QLatin1String("tags")) {
        const std::optional<QString> t = tags();
        return t ? DisplayStringWrapper::present(*t) : DisplayStringWrapper::notPresent();
    }
    if (key == QLatin1String("file_name"))
        return DisplayStringWrapper::present(fileName);
    if (key == QLatin1String("file_name_without_any_extensions"))
        return DisplayStringWrapper::present(fileNameUpToFirstPeriod);
    if (key == QLatin1String("parent"))
        return DisplayStringWrapper::present(parent);
    if (key == QLatin1String("absolute_parent_path"))
        return DisplayStringWrapper::present(absoluteParentPath);
    // Spelled this way, the key asks for a length, and only in the display form.
    if (key == QLatin1String("absoluteParentPath"))
        return DisplayStringWrapper::present(
            QString::number(StringHelpers::characterCount(absoluteParentPath)));
    if (key == QLatin1String("relative_path"))
        return DisplayStringWrapper::present(relativePath);
    return std::nullopt;
}

DisplayStringWrapper Node::getDisplayString(const QString &key) const
{
    if (std::optional<DisplayStringWrapper> own = ownDisplayString(key))
        return *std::move(own);
    const std::optional<MetadataSource> source = sourceForKey(key);
    if (!source)
        return DisplayStringWrapper::notPresent();
    const std::optional<WrappedMetaDataValue> stored
        = MetadataStorage::shared().getWrappedValueIfRead(absolutePath, key, retrievedKey, *source);
    if (!stored) {
        DataCoordinator::shared().retrieveDataAsynchronously(
            std::const_pointer_cast<Node>(shared_from_this()), *source);
        return DisplayStringWrapper::waiting();
    }
    return displayStringOfStoredValue(key, *stored);
}

void Node::visitDisplayStrings(
    const QList<NodePtr> &nodes, qsizetype from, const QString &key,
    const std::function<bool(qsizetype index, const DisplayStringWrapper &value)> &visit)
{
    if (from >= nodes.size())
        return;
    const std::optional<MetadataSource> source = TagManager::shared().sourceForKey(key);
    if (!source || nodes.at(from)->ownDisplayString(key)) {
        // The node's own strings, or a key without a source: nothing to gain from the store.
        for (qsizetype i = from; i < nodes.size(); ++i) {
            if (!visit(i, nodes.at(i)->getDisplayString(key)))
                return;
        }
        return;
    }
    // In runs that grow from short to long, so that an early stop wastes little and writers to
    // the store never wait long.
    qsizetype runLength = 32;
    QStringList paths;
    paths.reserve(std::min<qsizetype>(nodes.size() - from, 4096));
    for (qsizetype run = from; run < nodes.size();
         run += runLength, runLength = std::min<qsizetype>(runLength * 4, 4096)) {
        const qsizetype end = std::min(nodes.size(), run + runLength);
        paths.clear();
        for (qsizetype i = run; i < end; ++i)
            paths.append(nodes.at(i)->absolutePath);
        const QList<std::optional<WrappedMetaDataValue>> stored
            = MetadataStorage::shared().getWrappedValuesIfRead(paths, key, retrievedKey, *source);
        for (qsizetype i = run; i < end; ++i) {
            const std::optional<WrappedMetaDataValue> &value = stored.at(i - run);
            if (!value)
                DataCoordinator::shared().retrieveDataAsynchronously(nodes.at(i), *source);
            if (!visit(i,
                       value ? displayStringOfStoredValue(key, *value)
                             : DisplayStringWrapper::waiting()))
                return;
        }
    }
}

WrappedMetaDataValue Node::getWrappedValueSync(const QString &key) const
{
    if (key == QLatin1String("name"))
        return WrappedMetaDataValue::string(name);
    if (key == QLatin1String("absolute_path"))
        return WrappedMetaDataValue::string(absolutePath);
    if (key == QLatin1String("full_path_name_length"))
        return WrappedMetaDataValue::integer(StringHelpers::characterCount(absolutePath));
    if (key == QLatin1String("tags")) {
        const std::optional<QString> t = tags();
        return t ? WrappedMetaDataValue::string(*t) : WrappedMetaDataValue();
    }
    if (key == QLatin1String("file_name"))
        return WrappedMetaDataValue::string(fileName);
    if (key == QLatin1String("file_name_without_any_extensions"))
        return WrappedMetaDataValue::string(fileNameUpToFirstPeriod);
    if (key == QLatin1String("parent"))
        return WrappedMetaDataValue::string(parent);
    if (key == QLatin1String("absolute_parent_path"))
        return WrappedMetaDataValue::string(absoluteParentPath);
    if (key == QLatin1String("relative_path"))
        return WrappedMetaDataValue::string(relativePath);
    const std::optional<MetadataSource> source = sourceForKey(key);
    if (!source)
        return {};
    return storedValueReadingNow(key, *source);
}

QString Node::getStringValueSync(const QString &key) const
{
    const WrappedMetaDataValue value = getWrappedValueSync(key);
    switch (value.kind()) {
    case WrappedMetaDataValue::Kind::StringValue:
        return value.stringValue();
    case WrappedMetaDataValue::Kind::DateValue:
        return formatDisplayDate(value.dateValue());
    case WrappedMetaDataValue::Kind::BoolValue:
        return value.boolValue() ? QStringLiteral("true") : QStringLiteral("false");
    case WrappedMetaDataValue::Kind::NSInteger:
        return ByteCountFormatter::stringFromByteCount(value.integerValue());
    case WrappedMetaDataValue::Kind::None:
        break;
    }
    return QStringLiteral("Null");
}

QDateTime Node::getDateValueSync(const QString &key) const
{
    const WrappedMetaDataValue value = getWrappedValueSync(key);
    return value.kind() == WrappedMetaDataValue::Kind::DateValue ? value.dateValue()
                                                                 : distantPast();
}

qint64 Node::getIntValueSync(const QString &key) const
{
    const WrappedMetaDataValue value = getWrappedValueSync(key);
    return value.kind() == WrappedMetaDataValue::Kind::NSInteger ? value.integerValue() : 0;
}

void Node::addDataObserver(const std::shared_ptr<DataIsReadyObserver> &observer, const QString &key)
{
    if (const std::optional<MetadataSource> source = sourceForKey(key))
        addDataObserver(observer, *source);
}

void Node::addDataObserver(const std::shared_ptr<DataIsReadyObserver> &observer,
                           MetadataSource source)
{
    std::lock_guard lock(dataReadyObserverListLock);
    if (!dataReadyObservers)
        dataReadyObservers = std::make_unique<ObserverLists>();
    (*dataReadyObservers)[size_t(source)].append({observer});
}

void Node::remove(const DataIsReadyObserver *observer, MetadataSource source)
{
    std::lock_guard lock(dataReadyObserverListLock);
    if (!dataReadyObservers)
        return;
    QList<WeakDataIsReadyObserverReference> &list = (*dataReadyObservers)[size_t(source)];
    // Entries whose observer has died stay: only the given object's entries go.
    list.removeIf([observer](const WeakDataIsReadyObserverReference &reference) {
        const auto live = reference.observer.lock();
        return live && live.get() == observer;
    });
}

void Node::signalDataIsNowReady(MetadataSource source) const
{
    std::weak_ptr<const Node> weakSelf = weak_from_this();
    MainQueue::post([weakSelf, source] {
        const auto self = weakSelf.lock();
        if (!self)
            return;
        QList<WeakDataIsReadyObserverReference> observers;
        {
            std::lock_guard lock(self->dataReadyObserverListLock);
            if (self->dataReadyObservers)
                observers = (*self->dataReadyObservers)[size_t(source)];
        }
        for (const WeakDataIsReadyObserverReference &reference : std::as_const(observers)) {
            if (const auto observer = reference.observer.lock())
                observer->update(source);
        }
    });
}

int Node::caseInsensitiveStringCompare(const QString &a, const QString &b)
{
    return a.compare(b, Qt::CaseInsensitive);
}

QDateTime Node::distantPast()
{
    return QDateTime(QDate(1, 1, 1), QTime(0, 0), Qt::UTC);
}

QString Node::formatDisplayDate(const QDateTime &date)
{
    return DateFormatter::mediumDateShortTime(date);
}

namespace {

NodeComparisonResult natural(int comparison)
{
    if (comparison < 0)
        return NodeComparisonResult::aBeforeB;
    if (comparison > 0)
        return NodeComparisonResult::bBeforeA;
    return NodeComparisonResult::tie;
}

NodeComparisonResult inverted(NodeComparisonResult r)
{
    switch (r) {
    case NodeComparisonResult::aBeforeB:
        return NodeComparisonResult::bBeforeA;
    case NodeComparisonResult::bBeforeA:
        return NodeComparisonResult::aBeforeB;
    case NodeComparisonResult::tie:
        break;
    }
    return NodeComparisonResult::tie;
}

// Values first (greater strings first), then those still waiting, then those without one.
NodeComparisonResult compareLocation(const Node &a, const Node &b, const QString &key)
{
    // Forces the source to be read on this thread before the display strings are taken.
    a.getStringValueSync(key);
    b.getStringValueSync(key);
    const DisplayStringWrapper da = a.getDisplayString(key);
    const DisplayStringWrapper db = b.getDisplayString(key);
    using K = DisplayStringWrapper::Kind;
    if (da.kind() == K::Present && db.kind() == K::Present) {
        const int c = da.text().compare(db.text(), Qt::CaseSensitive);
        return c == 0 ? NodeComparisonResult::tie
                      : (c > 0 ? NodeComparisonResult::aBeforeB : NodeComparisonResult::bBeforeA);
    }
    if (da.kind() == db.kind())
        return NodeComparisonResult::tie;
    const auto rank = [](K k) {
        return k == K::Present ? 0 : (k == K::Waiting ? 1 : 2);
    };
    return rank(da.kind()) < rank(db.kind()) ? NodeComparisonResult::aBeforeB
                                             : NodeComparisonResult::bBeforeA;
}

NodeComparisonResult compareDates(const QDateTime &a, const QDateTime &b)
{
    // Reversed on purpose: the ascending date modes list the newest first.
    if (a == b)
        return NodeComparisonResult::tie;
    return a > b ? NodeComparisonResult::aBeforeB : NodeComparisonResult::bBeforeA;
}

} // namespace

NodeComparisonResult Node::compare(const Node &a, const Node &b, SortMode mode)
{
    const int raw = int(mode);
    const bool descending = raw & 1;
    NodeComparisonResult r = NodeComparisonResult::tie;
    switch (SortMode(raw & ~1)) {
    case SortMode::nameAndSequenceAscending:
    case SortMode::pathAndSequenceAscending:
        r = natural(caseInsensitiveStringCompare(a.smartName, b.smartName));
        break;
    case SortMode::nameAscending:
        r = natural(caseInsensitiveStringCompare(a.name, b.name));
        break;
    case SortMode::absolutePathAscending:
        r = natural(caseInsensitiveStringCompare(a.absolutePath, b.absolutePath));
        break;
    case SortMode::sizeAscending: {
        const qint64 sa = a.getIntValueSync(QStringLiteral("size"));
        const qint64 sb = b.getIntValueSync(QStringLiteral("size"));
        r = natural(sa < sb ? -1 : (sa > sb ? 1 : 0));
        break;
    }
    case SortMode::fileCreationDateAscending:
        r = compareDates(a.getDateValueSync(QStringLiteral("creation_date")),
                         b.getDateValueSync(QStringLiteral("creation_date")));
        break;
    case SortMode::fileModificationDateAscending:
        r = compareDates(a.getDateValueSync(QStringLiteral("modification_date")),
                         b.getDateValueSync(QStringLiteral("modification_date")));
        break;
    case SortMode::contentCreationDateAscending:
        r = compareDates(a.getDateValueSync(QStringLiteral("contentcreationdate")),
                         b.getDateValueSync(QStringLiteral("contentcreationdate")));
        break;
    case SortMode::cityAscending:
        r = compareLocation(a, b, QStringLiteral("City"));
        break;
    case SortMode::countryAscending:
        r = compareLocation(a, b, QStringLiteral("Country"));
        break;
    case SortMode::subLocationAscending:
        r = compareLocation(a, b, QStringLiteral("Sub-location"));
        break;
    case SortMode::provinceAscending:
        r = compareLocation(a, b, QStringLiteral("Province-State"));
        break;
    default:
        qFatal("Node::compare: unknown sort mode %d", raw);
    }
    return descending ? inverted(r) : r;
}
