#pragma once

#include "PreviewTableCellObservers.h"

#include <QTableView>

#include <utility>

class PreviewTableDataSource;
class QSvgRenderer;

// The preview table's view: takes dropped files anywhere on it, invites a drop with the
// "DragHere" picture while it has no rows, and keeps the observers of the rows on screen.
class DragAndDropTableView : public QTableView
{
    Q_OBJECT

public:
    explicit DragAndDropTableView(QWidget *parent = nullptr);
    ~DragAndDropTableView() override;

    void setDataSource(PreviewTableDataSource *dataSource);
    PreviewTableCellObservers &cellObservers() { return m_cellObservers; }

    // The first and last row on screen, or -1, -1 without rows.
    std::pair<int, int> visibleRows() const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void paintDragHere();

    PreviewTableDataSource *m_dataSource = nullptr;
    PreviewTableCellObservers m_cellObservers;
    QSvgRenderer *m_dragHere;
};
