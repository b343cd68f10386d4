#pragma once

#include "session/Node.h"
#include "session/PreviewTableUpdating.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QStringList>

#include <memory>

// The list of items as a table: the name, then the display strings of the given keys. A cell
// whose value is still being read registers for the node's notification and redraws then.
class PreviewListModel
    : public QAbstractTableModel
    , public PreviewTableUpdating
{
    Q_OBJECT

public:
    explicit PreviewListModel(QStringList keys, QObject *parent = nullptr);
    ~PreviewListModel() override;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    void setNodes(const QList<NodePtr> &nodes) override;
    void updateAll() override;

    const QList<NodePtr> &nodes() const { return m_nodes; }

private:
    class RowObserver;
    void rowIsReady(const Node *node);

    QStringList m_keys;
    QList<NodePtr> m_nodes;
    QHash<const Node *, int> m_rowOfNode;
    mutable QHash<const Node *, std::shared_ptr<RowObserver>> m_observers;
};
