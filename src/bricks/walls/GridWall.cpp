#include "GridWall.h"

#include <QGridLayout>

GridWall::GridWall(QWidget *parent)
    : QWidget(parent)
    , m_layout(new QGridLayout(this))
{
    m_layout->setContentsMargins(0, 0, 0, 0);
}

void GridWall::adoptSubview(QWidget *child)
{
    child->setParent(this);
    if (auto *marker = qobject_cast<GridRowMarker *>(child)) {
        // The marker only carries the row number; it takes no room.
        marker->row = m_rows++;
        marker->setVisible(false);
        return;
    }
    addCell(m_rows++, child);
}

void GridWall::addCell(int row, QWidget *cell)
{
    cell->setParent(this);
    int column = 0;
    while (m_layout->itemAtPosition(row, column))
        ++column;
    m_layout->addWidget(cell, row, column);
}

GridRowMarker::GridRowMarker(QWidget *parent)
    : QWidget(parent)
{ }

void GridRowMarker::adoptSubview(QWidget *child)
{
    auto *grid = qobject_cast<GridWall *>(parentWidget());
    if (!grid)
        qFatal("GridRow must stand directly in a GridWall");
    grid->addCell(row, child);
}
