#include "PreviewTableViewController.h"

#include "DragAndDropTableView.h"
#include "PreviewTableCellDelegate.h"
#include "PreviewTableDataSource.h"
#include "platform/MainQueue.h"
#include "session/DataModel.h"
#include "session/MainContentViewing.h"
#include "session/PreviewTableUpdating.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int statusColumnWidth = 40;
constexpr int rowHeight = 24;

// Tells the window whether the selection being announced comes from the table.
void setSelectionChangedFromTable(bool fromTable)
{
    if (MainContentViewing *window = MainContentViewing::installed())
        window->setSelectionChangedFromTable(fromTable);
}

// Forwards the engine's calls while the controller lives.
class EngineConnection : public PreviewTableUpdating
{
public:
    explicit EngineConnection(PreviewTableViewController *controller)
        : controller(controller)
    { }
    void setNodes(const QList<NodePtr> &nodes) override
    {
        if (controller)
            controller->setNodes(nodes);
    }
    void updateAll() override
    {
        if (controller)
            controller->updateAll();
    }
    QPointer<PreviewTableViewController> controller;
};

} // namespace

PreviewTableViewController::PreviewTableViewController(DataModel &dataModel,
                                                       DelayedBuild delayedBuild)
    : NiblessViewController(delayedBuild)
    , dataModel(dataModel)
{ }

PreviewTableViewController::~PreviewTableViewController() = default;

QWidget *PreviewTableViewController::build()
{
    tableView = new DragAndDropTableView;
    previewTableViewDataSource = new PreviewTableDataSource(this);
    tableView->setDataSource(previewTableViewDataSource);
    tableView->setItemDelegate(new PreviewTableCellDelegate(
        previewTableViewDataSource, &tableView->cellObservers(), tableView));
    tableView->setAlternatingRowColors(true);
    tableView->setSelectionBehavior(QAbstractItemView::SelectRows);
    tableView->setSelectionMode(QAbstractItemView::ExtendedSelection);
    tableView->setShowGrid(false);
    tableView->setWordWrap(false);
    tableView->setFrameShape(QFrame::NoFrame);
    tableView->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    tableView->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    tableView->setMinimumSize(100, 100);

    QHeaderView *rows = tableView->verticalHeader();
    rows->hide();
    rows->setMinimumSectionSize(1);
    rows->setSectionResizeMode(QHeaderView::Fixed);
    rows->setDefaultSectionSize(rowHeight);

    QHeaderView *columns = tableView->horizontalHeader();
    columns->setSectionsMovable(true);
    columns->setHighlightSections(false);
    columns->setMinimumSectionSize(statusColumnWidth);
    columns->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    connect(columns, &QHeaderView::sectionMoved, this,
            &PreviewTableViewController::tableViewDidDrag);

    connect(tableView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &PreviewTableViewController::tableViewSelectionDidChange);
    previewTableViewDataSource->setDropHandler(
        [this](const QStringList &paths) { dataModel.sourceList.add(paths, true); });
    updateColumns();
    return tableView;
}

void PreviewTableViewController::updateColumns()
{
    setColumns({u"name"_s, u"GPSDataAvailable"_s, u"Sub-location"_s, u"City"_s, u"Province-State"_s,
                u"Country"_s, u"IPTCDataComplete"_s});
}

void PreviewTableViewController::setColumns(const QStringList &keys)
{
    if (!tableView)
        return;
    const QList<NodePtr> selected = dataModel.selectedNodes();
    m_changingRowsItself = true;
    previewTableViewDataSource->setColumnKeys(keys);
    m_changingRowsItself = false;
    restoreFixedColumnOrder();
    QHeaderView *header = tableView->horizontalHeader();
    for (int column = 0; column < keys.size(); ++column) {
        if (PreviewTableDataSource::cellKind(keys.at(column))
            == PreviewTableDataSource::CellKind::DataAvailability) {
            header->setSectionResizeMode(column, QHeaderView::Fixed);
            header->resizeSection(column, statusColumnWidth);
        } else if (column == 0 && keys.size() > 3) {
            header->setSectionResizeMode(column, QHeaderView::Interactive);
        } else {
            header->setSectionResizeMode(column, QHeaderView::Stretch);
        }
    }
    sizeToFit();
    selectRows(selected);
}

void PreviewTableViewController::sizeToFit()
{
    // The name takes about a third of the width when the location fields share the rest.
    QHeaderView *header = tableView->horizontalHeader();
    if (header->count() > 3 && header->sectionResizeMode(0) == QHeaderView::Interactive)
        header->resizeSection(0, std::max(180, tableView->viewport()->width() * 3 / 10));
}

void PreviewTableViewController::restoreFixedColumnOrder()
{
    QHeaderView *header = tableView->horizontalHeader();
    const QSignalBlocker blocker(header);
    for (int logical = 0; logical < header->count(); ++logical) {
        if (header->visualIndex(logical) != logical)
            header->moveSection(header->visualIndex(logical), logical);
    }
    header->viewport()->update();
}

void PreviewTableViewController::setNodes(const QList<NodePtr> &nodes)
{
    if (!previewTableViewDataSource)
        return;
    const QList<NodePtr> selected = dataModel.selectedNodes();
    m_changingRowsItself = true;
    previewTableViewDataSource->setNodes(nodes);
    m_changingRowsItself = false;
    selectRows(selected);
}

void PreviewTableViewController::updateAll()
{
    dataModel.waitingForData->setValue(false);
    if (!tableView)
        return;
    tableView->cellObservers().clear();
    tableView->viewport()->update();
    updateColumns();
}

std::shared_ptr<PreviewTableUpdating> PreviewTableViewController::engineConnection()
{
    if (!m_engineConnection)
        m_engineConnection = std::make_shared<EngineConnection>(this);
    return m_engineConnection;
}

void PreviewTableViewController::tableViewSelectionDidChange()
{
    if (m_changingRowsItself)
        return;
    QList<int> rows;
    for (const QItemSelectionRange &range : tableView->selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row)
            rows.append(row);
    }
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    QList<NodePtr> selected;
    selected.reserve(rows.size());
    const QList<NodePtr> &nodes = previewTableViewDataSource->nodes();
    for (int row : std::as_const(rows)) {
        if (row >= 0 && row < nodes.size())
            selected.append(nodes.at(row));
    }
    // The flag stays up while the listeners run and until the main queue turns, so that the
    // window does not select the same rows again in answer.
    setSelectionChangedFromTable(true);
    dataModel.setSelectedNodes(selected);
    MainQueue::post([] { setSelectionChangedFromTable(false); });
}

void PreviewTableViewController::tableViewDidDrag()
{
    QHeaderView *header = tableView->horizontalHeader();
    const QStringList &keys = previewTableViewDataSource->columnKeys();
    QStringList order;
    for (int visual = 0; visual < header->count(); ++visual)
        order << keys.value(header->logicalIndex(visual));
    dataModel.columnList.write(order);
}

void PreviewTableViewController::selectRows(const QList<NodePtr> &nodes)
{
    if (!tableView)
        return;
    if (nodes.isEmpty()) {
        m_changingRowsItself = true;
        tableView->selectionModel()->clearSelection();
        m_changingRowsItself = false;
        return;
    }
    QSet<const Node *> wanted;
    wanted.reserve(nodes.size());
    for (const NodePtr &node : nodes)
        wanted.insert(node.get());
    const QList<NodePtr> &rows = previewTableViewDataSource->nodes();
    const int lastColumn = previewTableViewDataSource->columnCount() - 1;
    QItemSelection selection;
    int start = -1;
    for (int row = 0; row <= rows.size(); ++row) {
        const bool isWanted = row < rows.size() && wanted.contains(rows.at(row).get());
        if (isWanted && start < 0) {
            start = row;
        } else if (!isWanted && start >= 0) {
            selection.select(previewTableViewDataSource->index(start, 0),
                             previewTableViewDataSource->index(row - 1, lastColumn));
            start = -1;
        }
    }
    m_changingRowsItself = true;
    tableView->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    m_changingRowsItself = false;
}

void PreviewTableViewController::scrollToFirstSelectedRow()
{
    if (!tableView)
        return;
    int first = -1;
    for (const QItemSelectionRange &range : tableView->selectionModel()->selection())
        first = first < 0 ? range.top() : std::min(first, range.top());
    if (first >= 0)
        tableView->scrollTo(previewTableViewDataSource->index(first, 0));
}
