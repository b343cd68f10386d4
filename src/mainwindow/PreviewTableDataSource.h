#pragma once

#include "session/Node.h"

#include <QAbstractTableModel>
#include <QList>
#include <QStringList>

#include <functional>

// The rows of the preview table: the nodes of the current list, in order, and nothing else. A
// cell asks its node for what it shows; no value is copied here.
class PreviewTableDataSource : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Role {
        // The lower line of a two-line cell: the value the program worked out for the column.
        ProposedTextRole = Qt::UserRole + 1,
    };
    enum class CellKind { SingleLine, DualLine, DataAvailability };

    explicit PreviewTableDataSource(QObject *parent = nullptr);

    // The column keys, in the table's fixed order.
    void setColumnKeys(const QStringList &keys);
    const QStringList &columnKeys() const { return m_columnKeys; }
    void setNodes(const QList<NodePtr> &nodes);
    const QList<NodePtr> &nodes() const { return m_nodes; }
    const NodePtr &nodeAt(int row) const { return m_nodes.at(row); }

    static CellKind cellKind(const QString &key);
    // The column's worked-out counterpart ("City" has "computedCity"), or an empty string.
    static QString proposedValueKey(const QString &key);
    // A display string as a cell words it: "waiting…" and "n/a" for the two cases without text.
    static QString cellText(const DisplayStringWrapper &value);

    // Where dropped files go: the source list, on the next turn of the main queue.
    void setDropHandler(std::function<void(const QStringList &paths)> handler);
    // The file paths of a drop; items that are no file URL are skipped.
    static QStringList droppedPaths(const QMimeData *data);
    bool acceptDrop(const QMimeData *data);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QStringList mimeTypes() const override;
    Qt::DropActions supportedDropActions() const override;
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                         const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

private:
    QList<NodePtr> m_nodes;
    QStringList m_columnKeys;
    std::function<void(const QStringList &)> m_dropHandler;
};
