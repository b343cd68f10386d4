#pragma once

#include "Node.h"

#include <QList>

// What the pipeline needs of a table that shows the list: it is handed the new nodes and
// asked to redraw, on the main thread.
class PreviewTableUpdating
{
public:
    virtual ~PreviewTableUpdating() = default;
    virtual void setNodes(const QList<NodePtr> &nodes) = 0;
    virtual void updateAll() = 0;
};
