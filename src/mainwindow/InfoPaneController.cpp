#include "InfoPaneController.h"

#include "InfoPaneCellDelegate.h"
#include "InfoPaneDataSource.h"
#include "bricks/Assembly.h"
#include "bricks/walls/Wall.h"
#include "bricks/walls/WallDirectives.h"
#include "metadata/MetadataStorage.h"
#include "session/DataModel.h"
#include "session/InfoPaneContent.h"

#include <QApplication>
#include <QEvent>
#include <QHeaderView>
#include <QPointer>
#include <QTableView>

namespace B = BuildDirectivesNamespace;
using namespace LayoutRecipeNamespace;
using namespace Qt::StringLiterals;

class InfoPaneController::XMPObserver : public DataIsReadyObserver
{
public:
    explicit XMPObserver(InfoPaneController *controller)
        : controller(controller)
    { }
    void update(MetadataSource source) override
    {
        if (controller)
            controller->update(source);
    }
    QPointer<InfoPaneController> controller;
};

InfoPaneController::InfoPaneController(DataModel &dataModel, DelayedBuild delayedBuild)
    : NiblessViewController(delayedBuild)
    , miniFont(InfoPaneCellDelegate::miniFont(QApplication::font()))
    , dataModel(dataModel)
    , m_xmpObserver(std::make_shared<XMPObserver>(this))
{ }

InfoPaneController::~InfoPaneController()
{
    for (const NodePtr &node : std::as_const(xmpObservedNodes))
        node->remove(m_xmpObserver.get(), MetadataSource::ExifToolGeneric);
}

QWidget *InfoPaneController::build()
{
    m_dataSource = new InfoPaneDataSource(this);
    tableView = new QTableView;
    tableView->setModel(m_dataSource);
    tableView->setItemDelegate(new InfoPaneCellDelegate(tableView));
    tableView->horizontalHeader()->hide();
    tableView->verticalHeader()->hide();
    tableView->verticalHeader()->setMinimumSectionSize(1);
    tableView->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    tableView->verticalHeader()->setDefaultSectionSize(20);
    tableView->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Interactive);
    tableView->horizontalHeader()->setStretchLastSection(true);
    tableView->horizontalHeader()->resizeSection(0, 200);
    tableView->setShowGrid(false);
    tableView->setWordWrap(false);
    tableView->setFrameShape(QFrame::NoFrame);
    tableView->setSelectionBehavior(QAbstractItemView::SelectRows);
    tableView->setSelectionMode(QAbstractItemView::SingleSelection);
    tableView->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);

    const LayoutTag table("infoPaneTable");
    auto assembly
        = ::build({B::Wall {B::EmbeddedControl(tableView).tag(table)}.layout(pinEdges(table, 0))});
    assembly->activate();
    mainWall = qobject_cast<Wall *>(assembly->view());
    Q_ASSERT(mainWall);
    mainWall->setMinimumHeight(60);
    mainWall->installEventFilter(this);
    applyTheme();

    // The controller may go before the data model, whose listeners stay: they check it is there.
    QPointer<InfoPaneController> self(this);
    dataModel._selectedNodes->addColdListener([self](const QList<NodePtr> &) {
        if (self)
            self->handleSelectionChanged();
    });
    dataModel.infoPaneCategory->addColdListener([self](const int &) {
        if (self)
            self->reloadData();
    });
    handleSelectionChanged();
    return mainWall;
}

void InfoPaneController::applyTheme()
{
    // Near black in a dark theme, white in a light one.
    const bool dark = QApplication::palette().color(QPalette::Window).lightness() < 128;
    const QColor background = dark ? QColor::fromRgbF(0.1, 0.1, 0.1) : QColor(Qt::white);
    mainWall->setBackgroundColor(background);
    QPalette palette = tableView->palette();
    palette.setColor(QPalette::Base, background);
    palette.setColor(QPalette::AlternateBase, background);
    tableView->setPalette(palette);
}

bool InfoPaneController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == mainWall && event->type() == QEvent::ApplicationPaletteChange)
        applyTheme();
    return QObject::eventFilter(watched, event);
}

QStringList InfoPaneController::effectiveColumnIDs() const
{
    // The sidecar's rows only for a selection with a sidecar, not for every XMP packet.
    return InfoPaneContent::effectiveColumnIDs(
        dataModel.infoPaneCategory->value(), xmpBlockVisible,
        xmpBlockVisible && InfoPaneContent::computeSidecarRowsVisible(dataModel.selectedNodes()));
}

bool InfoPaneController::computeXMPBlockVisible() const
{
    return InfoPaneContent::computeXMPBlockVisible(dataModel.selectedNodes());
}

void InfoPaneController::handleSelectionChanged()
{
    for (const NodePtr &node : std::as_const(xmpObservedNodes))
        node->remove(m_xmpObserver.get(), MetadataSource::ExifToolGeneric);
    xmpObservedNodes.clear();
    xmpBlockVisible = computeXMPBlockVisible();
    if (!xmpBlockVisible) {
        // Files whose embedded metadata is not read yet may still turn out to have XMP.
        for (const NodePtr &node : dataModel.selectedNodes()) {
            if (!node->hasBeenRead(MetadataSource::ExifToolGeneric)) {
                node->addDataObserver(m_xmpObserver, MetadataSource::ExifToolGeneric);
                xmpObservedNodes.append(node);
            }
        }
    }
    reloadData();
}

void InfoPaneController::update(MetadataSource)
{
    const bool visible = computeXMPBlockVisible();
    if (visible == xmpBlockVisible)
        return;
    xmpBlockVisible = visible;
    reloadData();
}

void InfoPaneController::reloadData()
{
    if (m_dataSource)
        m_dataSource->reload(effectiveColumnIDs(), dataModel.selectedNodes());
}
