#include "ExampleWindow.h"

#include "bricks/Assembly.h"
#include "location/PinAndStepperController.h"
#include "mainwindow/DragAndDropTableView.h"
#include "mainwindow/PreviewTableDataSource.h"
#include "mainwindow/PreviewTableViewController.h"
#include "mainwindow/editors/ParameterSide.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"
#include "session/StatusLine.h"
#include "writing/WriteEngine.h"

#include <QItemSelectionModel>
#include <QLabel>
#include <QScrollArea>
#include <QSplitter>
#include <QStatusBar>
#include <QTimer>

ExampleWindow::ExampleWindow(DataModel &model, std::shared_ptr<OutputEngine> engine)
    : m_model(model)
    , m_engine(std::move(engine))
    , m_table(NiblessViewController::make<PreviewTableViewController>(model))
    , m_status(new QLabel)
    , m_map(new QLabel)
{
    setWindowTitle(tr("Palomet parameter side"));
    // The table tells the model of the user's selection itself.
    m_engine->addPreviewTable(m_table->engineConnection());

    m_controller = PinAndStepperController::create(m_model, this, this);
    m_assembly = build(ParameterSide::directive(m_model, m_engine, *m_controller));
    m_assembly->activate();
    auto *scroll = new QScrollArea;
    scroll->setWidget(m_assembly->view());
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setMinimumWidth(m_assembly->view()->sizeHint().width());

    auto *splitter = new QSplitter;
    splitter->addWidget(scroll);
    splitter->addWidget(m_table->view());
    splitter->setStretchFactor(1, 1);
    setCentralWidget(splitter);
    statusBar()->addWidget(m_status, 1);
    statusBar()->addPermanentWidget(m_map);

    auto *timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &ExampleWindow::refreshStatus);
    timer->start(100);
    refreshStatus();
    resize(1100, 760);
}

ExampleWindow::~ExampleWindow() = default;

QWidget *ExampleWindow::parameterSide() const
{
    return m_assembly->view();
}

int ExampleWindow::numberOfRows() const
{
    return int(m_table->previewTableViewDataSource->nodes().size());
}

NodePtr ExampleWindow::nodeAtRow(int row) const
{
    return m_table->previewTableViewDataSource->nodes().value(row);
}

QList<int> ExampleWindow::selectedRowIndexes() const
{
    QList<int> rows;
    for (const QModelIndex &index : m_table->tableView->selectionModel()->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

void ExampleWindow::selectRowIndexes(const QList<int> &rows, bool byExtendingSelection)
{
    QAbstractItemModel *table = m_table->tableView->model();
    QItemSelection selection;
    for (int row : rows)
        selection.select(table->index(row, 0), table->index(row, table->columnCount() - 1));
    m_table->tableView->selectionModel()->select(
        selection,
        byExtendingSelection ? QItemSelectionModel::Select : QItemSelectionModel::ClearAndSelect);
    if (!rows.isEmpty())
        m_table->tableView->scrollTo(table->index(rows.first(), 0));
}

void ExampleWindow::setRegion(const CoordinateRegion &region, bool)
{
    m_map->setText(tr("Map: %1, %2")
                       .arg(region.center.latitude, 0, 'f', 5)
                       .arg(region.center.longitude, 0, 'f', 5));
}

void ExampleWindow::selectPinMarker(int pinIndex, bool)
{
    m_map->setText(m_map->text() + tr(" (pin %1)").arg(pinIndex + 1));
}

void ExampleWindow::refreshStatus()
{
    m_status->setText(StatusLine::text(m_engine->createOutputEngineViewModel(),
                                       WriteEngine::shared().createViewModel(),
                                       int(m_model.selectedNodes().size())));
}
