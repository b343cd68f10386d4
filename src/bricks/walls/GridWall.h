#pragma once

#include "bricks/ViewTree.h"

#include <QWidget>

class QGridLayout;

// A grid of cells on QGridLayout. Rows are made by GridRowMarker children, each of which
// passes its own children on as the cells of one row.
class GridWall
    : public QWidget
    , public SubviewAdopting
{
    Q_OBJECT

public:
    explicit GridWall(QWidget *parent = nullptr);
    QGridLayout *gridLayout() const { return m_layout; }
    int rowCount() const { return m_rows; }
    void adoptSubview(QWidget *child) override;
    void addCell(int row, QWidget *cell);

private:
    QGridLayout *m_layout;
    int m_rows = 0;
};

class GridRowMarker
    : public QWidget
    , public SubviewAdopting
{
    Q_OBJECT

public:
    explicit GridRowMarker(QWidget *parent = nullptr);
    int row = -1;
    void adoptSubview(QWidget *child) override;
};
