#include "TagListTableViewController.h"

#include "ListTableCellView.h"
#include "metadata/TagManager.h"
#include "session/DataModel.h"

#include <QHeaderView>
#include <QTableWidget>

TagListTableViewController::TagListTableViewController(DataModel &dataModel)
    : NiblessViewController(DelayedBuild::Yes)
    , listData(TagManager::shared().columnIDs())
    , m_dataModel(dataModel)
{ }

QWidget *TagListTableViewController::build()
{
    tableView = new QTableWidget(int(listData.size()), 2);
    tableView->setAccessibleName(tr("Tags to add as columns"));
    tableView->setHorizontalHeaderLabels({tr("Name"), tr("Description")});
    tableView->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    tableView->horizontalHeader()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    tableView->verticalHeader()->hide();
    tableView->verticalHeader()->setDefaultSectionSize(
        std::max(24, tableView->fontMetrics().height() + 8));
    tableView->setShowGrid(false);
    tableView->setAlternatingRowColors(true);
    tableView->setSelectionMode(QAbstractItemView::NoSelection);
    tableView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tableView->setFocusPolicy(Qt::NoFocus);
    tableView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    const TagManager &tags = TagManager::shared();
    for (int row = 0; row < listData.size(); ++row) {
        const QString columnId = listData.at(row);
        tableView->setCellWidget(
            row, 0,
            new ListTableCellView(tags.displayName(columnId), {}, QStringLiteral("plus"),
                                  tr("Add as a column"),
                                  [this, columnId] { m_dataModel.columnList.add(columnId); }));
        auto *description = new QTableWidgetItem(columnId);
        description->setForeground(tableView->palette().brush(QPalette::PlaceholderText));
        description->setToolTip(tr("The tag's key"));
        tableView->setItem(row, 1, description);
    }
    return tableView;
}
