#pragma once

#include "location/ItemTableSelection.h"
#include "session/DataModel.h"

#include <QTest>

// A table over a fixed list whose selection handler assigns the model's selection, as the file
// table's does. Stepping and pins never extend a selection.
class ListTable : public ItemTableSelection
{
public:
    ListTable(DataModel &model, QList<NodePtr> nodes)
        : m_model(model)
        , m_nodes(std::move(nodes))
    { }
    int numberOfRows() const override { return int(m_nodes.size()); }
    NodePtr nodeAtRow(int row) const override { return m_nodes.at(row); }
    QList<int> selectedRowIndexes() const override { return m_selected; }
    void selectRowIndexes(const QList<int> &rows, bool byExtending) override
    {
        QVERIFY(!byExtending);
        m_selected = rows;
        QList<NodePtr> nodes;
        for (int row : rows)
            nodes << m_nodes.at(row);
        m_model.setSelectedNodes(nodes);
    }

private:
    DataModel &m_model;
    QList<NodePtr> m_nodes;
    QList<int> m_selected;
};
