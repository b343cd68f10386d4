#include "PreviewTableDataSource.h"

#include "metadata/TagManager.h"
#include "platform/MainQueue.h"
#include "session/DataAvailabilityCellState.h"

#include <QCoreApplication>
#include <QHash>
#include <QMimeData>
#include <QUrl>

using namespace Qt::StringLiterals;

PreviewTableDataSource::PreviewTableDataSource(QObject *parent)
    : QAbstractTableModel(parent)
{ }

void PreviewTableDataSource::setColumnKeys(const QStringList &keys)
{
    if (keys == m_columnKeys)
        return;
    beginResetModel();
    m_columnKeys = keys;
    endResetModel();
}

void PreviewTableDataSource::setNodes(const QList<NodePtr> &nodes)
{
    beginResetModel();
    m_nodes = nodes;
    endResetModel();
}

PreviewTableDataSource::CellKind PreviewTableDataSource::cellKind(const QString &key)
{
    if (key == u"name"_s)
        return CellKind::SingleLine;
    if (key == u"GPSDataAvailable"_s || key == u"IPTCDataComplete"_s)
        return CellKind::DataAvailability;
    return CellKind::DualLine;
}

QString PreviewTableDataSource::proposedValueKey(const QString &key)
{
    static const QHash<QString, QString> keyToProposedValueKeyMapping = {
        {u"City"_s, u"computedCity"_s},
        {u"Country"_s, u"GeolocationCountry"_s},
        {u"Sub-location"_s, u"computedSublocation"_s},
        {u"Province-State"_s, u"GeolocationRegion"_s},
    };
    return keyToProposedValueKeyMapping.value(key);
}

QString PreviewTableDataSource::cellText(const DisplayStringWrapper &value)
{
    switch (value.kind()) {
    case DisplayStringWrapper::Kind::Waiting:
        return QCoreApplication::translate("PreviewTable", "waiting…");
    case DisplayStringWrapper::Kind::NotPresent:
        return QCoreApplication::translate("PreviewTable", "n/a");
    case DisplayStringWrapper::Kind::Present:
        break;
    }
    return value.text();
}

int PreviewTableDataSource::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_nodes.size());
}

int PreviewTableDataSource::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_columnKeys.size());
}

QVariant PreviewTableDataSource::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_nodes.size() || index.column() >= m_columnKeys.size())
        return {};
    const Node &node = *m_nodes.at(index.row());
    const QString &key = m_columnKeys.at(index.column());
    const CellKind kind = cellKind(key);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        if (kind == CellKind::DataAvailability) {
            const auto state = DataAvailabilityCellState::configure(
                node, key, DataAvailabilityCellState::Tooltip::Omit);
            return state ? DataAvailabilityCellState::symbolDescription(state->symbol) : QString();
        }
        return cellText(node.getDisplayString(key));
    case ProposedTextRole: {
        const QString proposed = proposedValueKey(key);
        return proposed.isEmpty() ? QString() : cellText(node.getDisplayString(proposed));
    }
    case Qt::ToolTipRole:
        if (kind == CellKind::DataAvailability) {
            const auto state = DataAvailabilityCellState::configure(node, key);
            return state ? state->tooltip : QString();
        }
        return {};
    default:
        return {};
    }
}

QVariant PreviewTableDataSource::headerData(int section, Qt::Orientation orientation,
                                            int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= m_columnKeys.size())
        return {};
    const QString &key = m_columnKeys.at(section);
    if (role == Qt::DisplayRole)
        return TagManager::shared().displayName(key);
    if (role == Qt::TextAlignmentRole && cellKind(key) == CellKind::DataAvailability)
        return int(Qt::AlignCenter);
    return {};
}

Qt::ItemFlags PreviewTableDataSource::flags(const QModelIndex &index) const
{
    // The table as a whole takes drops, also where it has no rows.
    const Qt::ItemFlags flags = Qt::ItemIsDropEnabled;
    return index.isValid() ? flags | Qt::ItemIsEnabled | Qt::ItemIsSelectable : flags;
}

void PreviewTableDataSource::setDropHandler(std::function<void(const QStringList &)> handler)
{
    m_dropHandler = std::move(handler);
}

QStringList PreviewTableDataSource::droppedPaths(const QMimeData *data)
{
    QStringList paths;
    if (!data)
        return paths;
    for (const QUrl &url : data->urls()) {
        if (url.isLocalFile() && !url.toLocalFile().isEmpty())
            paths << url.toLocalFile();
    }
    return paths;
}

bool PreviewTableDataSource::acceptDrop(const QMimeData *data)
{
    const QStringList paths = droppedPaths(data);
    if (!paths.isEmpty() && m_dropHandler) {
        // Posted, so that the drag ends before the source list starts a scan or shows an alert.
        MainQueue::post([handler = m_dropHandler, paths] { handler(paths); });
    }
    return true;
}

QStringList PreviewTableDataSource::mimeTypes() const
{
    return {u"text/uri-list"_s};
}

Qt::DropActions PreviewTableDataSource::supportedDropActions() const
{
    return Qt::CopyAction;
}

bool PreviewTableDataSource::canDropMimeData(const QMimeData *data, Qt::DropAction, int, int,
                                             const QModelIndex &) const
{
    return data && data->hasUrls();
}

bool PreviewTableDataSource::dropMimeData(const QMimeData *data, Qt::DropAction, int, int,
                                          const QModelIndex &)
{
    return acceptDrop(data);
}
