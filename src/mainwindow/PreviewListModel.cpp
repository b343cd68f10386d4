#include "PreviewListModel.h"

#include "metadata/MetadataStorage.h"
#include "metadata/TagManager.h"

#include <QCoreApplication>

class PreviewListModel::RowObserver : public DataIsReadyObserver
{
public:
    RowObserver(PreviewListModel *model, const Node *node)
        : model(model)
        , node(node)
    { }
    void update(MetadataSource) override { model->rowIsReady(node); }

    PreviewListModel *model;
    const Node *node;
};

namespace {

// The IPTC status in the words the GPS status uses; the value is in the store once it shows.
QString iptcStatusText(const QString &path)
{
    switch (MetadataStorage::shared().getObjCIntegerValue(path, QStringLiteral("IPTCDataComplete"),
                                                          MetadataSource::ExifToolGeneric)) {
    case 0:
        return QStringLiteral("none");
    case 1:
        return QStringLiteral("complete");
    case 2:
        return QStringLiteral("incomplete");
    case 3:
        return QStringLiteral("divergent");
    default:
        return QString();
    }
}

} // namespace

PreviewListModel::PreviewListModel(QStringList keys, QObject *parent)
    : QAbstractTableModel(parent)
    , m_keys(std::move(keys))
{ }

PreviewListModel::~PreviewListModel() = default;

int PreviewListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_nodes.size());
}

int PreviewListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_keys.size());
}

QVariant PreviewListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_nodes.size())
        return {};
    const NodePtr &node = m_nodes.at(index.row());
    const QString &key = m_keys.at(index.column());
    if (role == Qt::ToolTipRole)
        return node->absolutePath;
    if (role != Qt::DisplayRole)
        return {};
    const DisplayStringWrapper value = node->getDisplayString(key);
    switch (value.kind()) {
    case DisplayStringWrapper::Kind::Present:
        if (key == QLatin1String("IPTCDataComplete"))
            return iptcStatusText(node->absolutePath);
        return value.text();
    case DisplayStringWrapper::Kind::NotPresent:
        return QString();
    case DisplayStringWrapper::Kind::Waiting:
        break;
    }
    // Told once the value's source has been read; one observer serves every column of a row.
    auto &observer = m_observers[node.get()];
    if (!observer)
        observer = std::make_shared<RowObserver>(const_cast<PreviewListModel *>(this), node.get());
    node->addDataObserver(observer, key);
    return QCoreApplication::translate("PreviewList", "…");
}

QVariant PreviewListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section >= m_keys.size())
        return {};
    return TagManager::shared().displayName(m_keys.at(section));
}

void PreviewListModel::setNodes(const QList<NodePtr> &nodes)
{
    beginResetModel();
    m_nodes = nodes;
    m_observers.clear();
    m_rowOfNode.clear();
    m_rowOfNode.reserve(nodes.size());
    for (int row = 0; row < nodes.size(); ++row)
        m_rowOfNode.insert(nodes.at(row).get(), row);
    endResetModel();
}

void PreviewListModel::updateAll()
{
    if (!m_nodes.isEmpty())
        emit dataChanged(index(0, 0), index(int(m_nodes.size()) - 1, columnCount() - 1));
}

void PreviewListModel::rowIsReady(const Node *node)
{
    const auto row = m_rowOfNode.constFind(node);
    if (row != m_rowOfNode.cend())
        emit dataChanged(index(*row, 0), index(*row, columnCount() - 1));
}
