#include "FirstWindow.h"

#include "InfoPaneController.h"
#include "PreviewTableViewController.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"
#include "session/StatusLine.h"
#include "writing/WriteEngine.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QSplitter>
#include <QStatusBar>
#include <QTimer>

FirstWindow::FirstWindow(DataModel &dataModel, std::shared_ptr<OutputEngine> engine,
                         QWidget *parent)
    : QMainWindow(parent)
    , m_dataModel(dataModel)
    , m_engine(std::move(engine))
    , m_previewTable(NiblessViewController::make<PreviewTableViewController>(dataModel))
    , m_infoPane(NiblessViewController::make<InfoPaneController>(dataModel))
    , m_status(new QLabel(this))
{
    setWindowTitle(tr("Palomet"));
    setAcceptDrops(true);
    auto *split = new QSplitter(Qt::Vertical, this);
    split->addWidget(m_previewTable->view());
    split->addWidget(m_infoPane->view());
    split->setStretchFactor(0, 1);
    split->setSizes({360, 200});
    setCentralWidget(split);
    statusBar()->addWidget(m_status, 1);
    m_engine->addPreviewTable(m_previewTable->engineConnection());

    auto *timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &FirstWindow::refreshStatus);
    timer->start(100);
    refreshStatus();
    resize(1000, 640);
}

FirstWindow::~FirstWindow() = default;

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
