#include "ExampleWindow.h"

#include "bricks/Assembly.h"
#include "location/PinAndStepperController.h"
#include "mainwindow/PreviewListModel.h"
#include "mainwindow/editors/ParameterSide.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"
#include "session/StatusLine.h"
#include "writing/WriteEngine.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QScrollArea>
#include <QSplitter>
#include <QStatusBar>
#include <QTableView>
#include <QTimer>

ExampleWindow::ExampleWindow(DataModel &model, std::shared_ptr<OutputEngine> engine)
    : m_model(model)
    , m_engine(std::move(engine))
    , m_listModel(std::make_shared<PreviewListModel>(QStringList {
          QStringLiteral("name"), QStringLiteral("Sub-location"), QStringLiteral("City"),
          QStringLiteral("Province-State"), QStringLiteral("Country"),
          QStringLiteral("GPSLatitude#"), QStringLiteral("GPSLongitude#")}))
    , m_table(new QTableView)
    , m_status(new QLabel)
    , m_map(new QLabel)
{
    setWindowTitle(tr("Palomet parameter side"));
    m_table->setModel(m_listModel.get());
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->setAlternatingRowColors(true);
    m_engine->addPreviewTable(m_listModel);
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        QList<NodePtr> selected;
        for (int row : selectedRowIndexes())
            selected.append(m_listModel->nodes().value(row));
        m_model.setSelectedNodes(selected);
    });

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
    splitter->addWidget(m_table);
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
    return m_listModel->rowCount();
}

NodePtr ExampleWindow::nodeAtRow(int row) const
{
    return m_listModel->nodes().value(row);
}

QList<int> ExampleWindow::selectedRowIndexes() const
{
    QList<int> rows;
    for (const QModelIndex &index : m_table->selectionModel()->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

void ExampleWindow::selectRowIndexes(const QList<int> &rows, bool byExtendingSelection)
{
    QItemSelection selection;
    for (int row : rows)
        selection.select(m_listModel->index(row, 0),
                         m_listModel->index(row, m_listModel->columnCount() - 1));
    m_table->selectionModel()->select(selection,
                                      byExtendingSelection ? QItemSelectionModel::Select
                                                           : QItemSelectionModel::ClearAndSelect);
    if (!rows.isEmpty())
        m_table->scrollTo(m_listModel->index(rows.first(), 0));
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
