#include "DragAndDropTableView.h"

#include "PreviewTableDataSource.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHeaderView>
#include <QMimeData>
#include <QPainter>
#include <QSvgRenderer>

DragAndDropTableView::DragAndDropTableView(QWidget *parent)
    : QTableView(parent)
    , m_cellObservers([this](int row) {
        if (model() && row < model()->rowCount())
            viewport()->update(
                QRect(0, rowViewportPosition(row), viewport()->width(), rowHeight(row)));
    })
    , m_dragHere(new QSvgRenderer(QStringLiteral(":/mainwindow/DragHere.svg"), this))
{
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
    setDragDropMode(QAbstractItemView::DropOnly);
    setDropIndicatorShown(false);
}

DragAndDropTableView::~DragAndDropTableView() = default;

void DragAndDropTableView::setDataSource(PreviewTableDataSource *dataSource)
{
    if (m_dataSource)
        disconnect(m_dataSource, nullptr, this, nullptr);
    m_dataSource = dataSource;
    setModel(dataSource);
    // Rows of a former list or column set are gone: their observers go with them.
    connect(dataSource, &QAbstractItemModel::modelAboutToBeReset, this,
            [this] { m_cellObservers.clear(); });
}

std::pair<int, int> DragAndDropTableView::visibleRows() const
{
    const int rows = model() ? model()->rowCount() : 0;
    if (rows == 0)
        return {-1, -1};
    const int first = rowAt(0);
    if (first < 0)
        return {-1, -1};
    const int last = rowAt(viewport()->height() - 1);
    return {first, last < 0 ? rows - 1 : last};
}

void DragAndDropTableView::paintEvent(QPaintEvent *event)
{
    if (!model() || model()->rowCount() == 0) {
        paintDragHere();
        return;
    }
    QTableView::paintEvent(event);
    const auto [first, last] = visibleRows();
    m_cellObservers.keepOnly(first, last);
}

void DragAndDropTableView::paintDragHere()
{
    QPainter painter(viewport());
    painter.fillRect(viewport()->rect(), palette().color(QPalette::Base));
    if (!m_dragHere->isValid())
        return;
    QRect target(QPoint(), m_dragHere->defaultSize());
    target.moveCenter(viewport()->rect().center());
    m_dragHere->render(&painter, target);
}

void DragAndDropTableView::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls()) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    } else {
        event->ignore();
    }
}

void DragAndDropTableView::dragMoveEvent(QDragMoveEvent *event)
{
    // A copy, wherever it is over the table: on a row, between rows or below them.
    if (event->mimeData()->hasUrls()) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    } else {
        event->ignore();
    }
}

void DragAndDropTableView::dropEvent(QDropEvent *event)
{
    if (!m_dataSource || !event->mimeData()->hasUrls()) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    if (m_dataSource->acceptDrop(event->mimeData()))
        event->accept();
}
