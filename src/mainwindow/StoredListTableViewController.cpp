#include "StoredListTableViewController.h"

#include "ListTableCellView.h"
#include "StoredListTableModel.h"
#include "bricks/KVOResponder.h"
#include "platform/MainQueue.h"
#include "session/SourceListData.h"

#include <QHeaderView>
#include <QPointer>
#include <QTableView>

StoredListTableViewController::StoredListTableViewController(StoredStringList &listData,
                                                             UserDefaults &defaults)
    : NiblessViewController(DelayedBuild::Yes)
    , listData(listData)
    , m_defaults(defaults)
{ }

StoredListTableViewController::~StoredListTableViewController() = default;

QWidget *StoredListTableViewController::build()
{
    tableView = new QTableView;
    scrollView = tableView;
    tableView->setAccessibleName(accessibleName());
    m_model = new StoredListTableModel(
        listData, internalPasteboardType(),
        [this](const QString &value) { return displayName(value); }, filesDroppedHandler(),
        tableView);
    tableView->setModel(m_model);
    tableView->horizontalHeader()->hide();
    tableView->horizontalHeader()->setStretchLastSection(true);
    tableView->verticalHeader()->hide();
    tableView->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    tableView->verticalHeader()->setDefaultSectionSize(
        std::max(24, tableView->fontMetrics().height() + 8));
    tableView->setShowGrid(false);
    tableView->setAlternatingRowColors(true);
    tableView->setSelectionBehavior(QAbstractItemView::SelectRows);
    tableView->setSelectionMode(QAbstractItemView::ExtendedSelection);
    tableView->setDragEnabled(true);
    tableView->setAcceptDrops(true);
    tableView->setDropIndicatorShown(true);
    tableView->setDragDropMode(QAbstractItemView::DragDrop);
    tableView->setDefaultDropAction(Qt::MoveAction);
    tableView->setDragDropOverwriteMode(false);
    tableView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    tableView->setWordWrap(false);
    makeCells();

    // The reload runs on the main thread whichever thread wrote the key.
    QPointer<QTableView> table = tableView;
    updateWhenDefaultsStorageKeyIsChanged = std::make_unique<KVOResponder>(
        listData.storageKey, m_defaults, false, [this, table](const QVariant &, const QString &) {
            MainQueue::runOrPost([this, table] {
                if (table)
                    reloadData();
            });
        });
    return tableView;
}

void StoredListTableViewController::reloadData()
{
    m_model->reload();
    makeCells();
}

ListTableCellView *StoredListTableViewController::cellAt(int row) const
{
    if (!tableView)
        return nullptr;
    return qobject_cast<ListTableCellView *>(tableView->indexWidget(m_model->index(row, 0)));
}

void StoredListTableViewController::makeCells()
{
    const QStringList &rows = m_model->rows();
    for (int row = 0; row < rows.size(); ++row) {
        const QString &value = rows.at(row);
        auto *cell = new ListTableCellView(displayName(value), abbreviation(value),
                                           QStringLiteral("trash"), deleteToolTip(),
                                           [this, row] { listData.deleteAt(row); });
        tableView->setIndexWidget(m_model->index(row, 0), cell);
    }
}
