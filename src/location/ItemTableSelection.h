#pragma once

#include "session/Node.h"

#include <QList>

// What the stepper needs of the file table: its rows, which are the current list in order, and
// its selection. The table view implements it; its own selection handler then updates the
// model's selected nodes.
class ItemTableSelection
{
public:
    virtual ~ItemTableSelection() = default;
    virtual int numberOfRows() const = 0;
    virtual NodePtr nodeAtRow(int row) const = 0;
    // Ascending.
    virtual QList<int> selectedRowIndexes() const = 0;
    virtual void selectRowIndexes(const QList<int> &rows, bool byExtendingSelection) = 0;
};
