#include "FirstWindow.h"

#include "PreviewListModel.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"
#include "session/StatusLine.h"
#include "writing/WriteEngine.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMimeData>
#include <QSplitter>
#include <QStatusBar>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>

FirstWindow::FirstWindow(DataModel &dataModel, std::shared_ptr<OutputEngine> engine,
                         QWidget *parent)
    : QMainWindow(parent)
    , m_dataModel(dataModel)
    , m_engine(std::move(engine))
    , m_listModel(std::make_shared<PreviewListModel>(
          QStringList {QStringLiteral("name"), QStringLiteral("human_readable_size"),
                       QStringLiteral("modification_date"), QStringLiteral("GPSDataAvailable"),
                       QStringLiteral("IPTCDataComplete")}))
    , m_table(new QTableView(this))
    , m_status(new QLabel(this))
{
    setWindowTitle(tr("Palomet"));
    setAcceptDrops(true);
    m_table->setModel(m_listModel.get());
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->setColumnWidth(0, 300);
    m_table->setColumnWidth(1, 90);
    m_table->setColumnWidth(2, 180);
    m_table->setColumnWidth(3, 110);
    m_table->setAlternatingRowColors(true);
    m_table->setAcceptDrops(false);
    setCentralWidget(m_table);
    statusBar()->addWidget(m_status, 1);
    m_engine->addPreviewTable(m_listModel);

    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        QList<NodePtr> selected;
        for (const QModelIndex &row : m_table->selectionModel()->selectedRows())
            selected.append(m_listModel->nodes().value(row.row()));
        m_dataModel.setSelectedNodes(selected);
    });

    auto *timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &FirstWindow::refreshStatus);
    timer->start(100);
    refreshStatus();
    resize(900, 560);
}

void FirstWindow::setMapWidget(QWidget *map)
{
    auto *splitter = new QSplitter(Qt::Horizontal, this);
    splitter->addWidget(takeCentralWidget());
    splitter->addWidget(map);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 1);
    setCentralWidget(splitter);
    resize(1280, 720);
}

QString FirstWindow::statusText() const
{
    return m_status->text();
}

void FirstWindow::refreshStatus()
{
    m_status->setText(StatusLine::text(m_engine->createOutputEngineViewModel(),
                                       WriteEngine::shared().createViewModel(),
                                       int(m_dataModel.selectedNodes().size())));
}

void FirstWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void FirstWindow::dropEvent(QDropEvent *event)
{
    QStringList paths;
    for (const QUrl &url : event->mimeData()->urls()) {
        if (url.isLocalFile())
            paths << url.toLocalFile();
    }
    if (paths.isEmpty())
        return;
    openPaths(paths);
    event->acceptProposedAction();
}

void FirstWindow::openPaths(const QStringList &paths)
{
    m_dataModel.sourceList.add(paths, true);
}
