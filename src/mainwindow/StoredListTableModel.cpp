#include "StoredListTableModel.h"

#include "platform/MainQueue.h"
#include "session/SourceListData.h"

#include <QMimeData>
#include <QPointer>
#include <QUrl>

#include <algorithm>

StoredListTableModel::StoredListTableModel(StoredStringList &listData,
                                           QString internalPasteboardType, DisplayFunc display,
                                           FilesDroppedFunc filesDropped, QObject *parent)
    : QAbstractTableModel(parent)
    , internalPasteboardType(std::move(internalPasteboardType))
    , m_listData(listData)
    , m_display(std::move(display))
    , m_filesDropped(std::move(filesDropped))
    , m_rows(listData.value())
{ }

void StoredListTableModel::reload()
{
    beginResetModel();
    m_rows = m_listData.value();
    endResetModel();
}

int StoredListTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int StoredListTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 1;
}

QVariant StoredListTableModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.size())
        return {};
    const QString &value = m_rows.at(index.row());
    switch (role) {
    // The row's cell view draws the text; the table itself only draws the selection.
    case Qt::AccessibleTextRole:
        return m_display ? m_display(value) : value;
    case Qt::ToolTipRole:
        return value;
    case Qt::UserRole:
        return value;
    default:
        return {};
    }
}

Qt::ItemFlags StoredListTableModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled;
}

Qt::DropActions StoredListTableModel::supportedDropActions() const
{
    return m_filesDropped ? Qt::MoveAction | Qt::CopyAction : Qt::MoveAction;
}

Qt::DropActions StoredListTableModel::supportedDragActions() const
{
    return Qt::MoveAction;
}

QStringList StoredListTableModel::mimeTypes() const
{
    QStringList types {internalPasteboardType};
    if (m_filesDropped)
        types << QStringLiteral("text/uri-list");
    return types;
}

QMimeData *StoredListTableModel::mimeData(const QModelIndexList &indexes) const
{
    QList<int> rows;
    for (const QModelIndex &index : indexes) {
        if (index.isValid() && !rows.contains(index.row()))
            rows << index.row();
    }
    std::sort(rows.begin(), rows.end());
    draggedIndices = rows;
    auto *data = new QMimeData;
    QByteArray encoded;
    for (int row : std::as_const(rows))
        encoded += QByteArray::number(row) + ' ';
    data->setData(internalPasteboardType, encoded.trimmed());
    return data;
}

bool StoredListTableModel::canDropMimeData(const QMimeData *data, Qt::DropAction action, int, int,
                                           const QModelIndex &) const
{
    if (data->hasFormat(internalPasteboardType))
        return action == Qt::MoveAction && draggedIndices.has_value();
    return m_filesDropped && data->hasUrls();
}

bool StoredListTableModel::dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int,
                                        const QModelIndex &parent)
{
    if (!canDropMimeData(data, action, row, 0, parent))
        return false;
    // A drop onto a row goes before it; a drop below the last row goes to the end.
    int target = row >= 0 ? row : (parent.isValid() ? parent.row() : int(m_rows.size()));
    if (data->hasFormat(internalPasteboardType)) {
        const QList<int> rows = *std::exchange(draggedIndices, std::nullopt);
        // The view must not remove the dragged rows itself: the stored list is the only copy,
        // and its change reloads the table.
        MainQueue::post([this, rows, target, alive = QPointer(this)] {
            if (alive)
                m_listData.move(rows, target);
        });
        return false;
    }
    QStringList paths;
    for (const QUrl &url : data->urls()) {
        if (url.isLocalFile())
            paths << url.toLocalFile();
    }
    if (paths.isEmpty())
        return false;
    // Posted, so that the drag has ended before a scan starts or an alert opens.
    MainQueue::post([filesDropped = m_filesDropped, paths] { filesDropped(paths); });
    return true;
}
