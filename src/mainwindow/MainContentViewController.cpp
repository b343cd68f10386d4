#include "MainContentViewController.h"

#include "ColumnListTableViewController.h"
#include "DragAndDropTableView.h"
#include "GeotagDialog.h"
#include "InfoPaneController.h"
#include "MapWebView.h"
#include "MapWidget.h"
#include "MinimalPreviewTableViewController.h"
#include "PreviewTableDataSource.h"
#include "PreviewTableViewController.h"
#include "SourceListTableViewController.h"
#include "TagListTableViewController.h"
#include "bricks/Assembly.h"
#include "bricks/SymbolIcons.h"
#include "bricks/controls/ControlDirectives.h"
#include "bricks/controls/SegmentedControlBrick.h"
#include "bricks/controls/SingleLineLabel.h"
#include "bricks/walls/BriskSplitView.h"
#include "bricks/walls/FragmentStackView.h"
#include "bricks/walls/TabWall.h"
#include "bricks/walls/WallDirectives.h"
#include "commons/Clock.h"
#include "commons/SmartTimerWrapper.h"
#include "editors/EditorStyle.h"
#include "editors/ParameterSide.h"
#include "location/Geocoder.h"
#include "location/PinAndStepperController.h"
#include "map/MapDelegate.h"
#include "metadata/TagManager.h"
#include "platform/MainQueue.h"
#include "preview/ImagePreview.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"
#include "session/StatusLine.h"
#include "writing/WriteEngine.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QHeaderView>
#include <QListView>
#include <QPushButton>
#include <QSplitter>
#include <QStyle>
#include <QTableView>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

namespace B = BuildDirectivesNamespace;
using namespace LayoutRecipeNamespace;
using D = SmartLayoutDirectionsType;

namespace {

// A plain holder that the table or the map is moved into.
QWidget *makeHost(const QString &name)
{
    auto *host = new QWidget;
    host->setObjectName(name);
    auto *layout = new QVBoxLayout(host);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    return host;
}

void moveInto(QWidget *view, QWidget *host)
{
    if (!view || !host || view->parentWidget() == host)
        return;
    host->layout()->addWidget(view);
    view->show();
}

QSplitter *makeCombined(Qt::Orientation orientation, QWidget *first, QWidget *second,
                        const QString &name)
{
    auto *split = new QSplitter(orientation);
    split->setObjectName(name);
    split->setChildrenCollapsible(false);
    split->addWidget(first);
    split->addWidget(second);
    split->setStretchFactor(0, 1);
    split->setStretchFactor(1, 1);
    return split;
}

// A fragment's heading.
B::StaticLabel heading(const QString &title, const LayoutTag &tag)
{
    return B::StaticLabel(title).tag(tag).style<QLabel>([](QLabel *label) {
        QFont font = label->font();
        font.setBold(true);
        label->setFont(font);
    });
}

} // namespace

MainContentViewController::MainContentViewController(DataModel &dataModel,
                                                     std::shared_ptr<OutputEngine> outputEngine,
                                                     MapDelegate *mapDelegate)
    : NiblessViewController(DelayedBuild::Yes)
    , previewSelectedIndex(std::make_shared<StraightVariable<int>>(0))
    , m_dataModel(dataModel)
    , m_outputEngine(std::move(outputEngine))
    , m_mapDelegate(mapDelegate)
{ }

MainContentViewController::~MainContentViewController()
{
    if (MainContentViewing::installed() == this)
        MainContentViewing::install(nullptr);
    if (windowUITimer)
        windowUITimer->invalidate();
    // The map's pin modes must not reach the controller once it is gone.
    if (MapWidget *map = mapWidget())
        map->setPinController(nullptr);
}

QWidget *MainContentViewController::build()
{
    previewTableViewController
        = NiblessViewController::make<PreviewTableViewController>(m_dataModel);
    minimalPreviewTableViewController
        = NiblessViewController::make<MinimalPreviewTableViewController>(m_dataModel);
    sourceListTableViewController
        = NiblessViewController::make<SourceListTableViewController>(m_dataModel);
    sourceListTableViewController->buildIfNeeded();
    columnListTableViewController
        = NiblessViewController::make<ColumnListTableViewController>(m_dataModel);
    columnListTableViewController->buildIfNeeded();
    tagListTableViewController
        = NiblessViewController::make<TagListTableViewController>(m_dataModel);
    tagListTableViewController->buildIfNeeded();
    infoPaneViewController = NiblessViewController::make<InfoPaneController>(m_dataModel);
    // The stepper selects in whichever table is shown; pins are shown and selected on the map.
    pinAndStepperController = PinAndStepperController::create(m_dataModel, this, m_mapDelegate);

    m_outputEngine->addPreviewTable(previewTableViewController->engineConnection());
    m_outputEngine->addPreviewTable(minimalPreviewTableViewController->engineConnection());
    MainContentViewing::install(this);

    auto *root = new QWidget;
    root->setObjectName(QStringLiteral("mainContent"));
    auto *layout = new QVBoxLayout(root);
    layout->setContentsMargins(0, 0, 0, 0);
    sideSplitter = new QSplitter(Qt::Horizontal, root);
    sideSplitter->setObjectName(QStringLiteral("sideSplitter"));
    sideSplitter->setChildrenCollapsible(false);
    sideSplitter->addWidget(buildParameterStack());
    sideSplitter->addWidget(buildOverviewPanel());
    sideSplitter->setStretchFactor(0, 0);
    sideSplitter->setStretchFactor(1, 1);
    sideSplitter->setSizes({m_parameterSideWidth, 900});
    layout->addWidget(sideSplitter);

    setupSidebarListeners();
    setupMapListeners();
    return root;
}

QWidget *MainContentViewController::buildParameterStack()
{
    const LayoutTag sourceTitle("sourceTitle"), sourceTable("sourceTable"), addTag("addButton"),
        clearTag("clearButton"), columnTitle("columnTitle"), columnTable("columnTable"),
        tagToggle("tagToggle"), tagTitle("tagTitle"), tagTable("tagTable"), preview("imagePreview"),
        scroll("parameterScroll"), bottom("bottomParameters");
    constexpr double inset = 10;

    const auto sourceFragment
        = B::FragmentWall {heading(tr("Files and Folders"), sourceTitle),
                           B::EmbeddedControl(sourceListTableViewController->view())
                               .tag(sourceTable)
                               .height(120),
                           B::PushButton(tr("Add…"), [this] { addSource(); })
                               .tag(addTag)
                               .style<QPushButton>([this](QPushButton *button) {
                                   addButton = button;
                                   button->setObjectName(QStringLiteral("addButton"));
                                   button->setIcon(SymbolIcons::icon(u"plus"));
                                   button->setToolTip(tr("Add files and folders to the list"));
                               }),
                           B::PushButton(tr("Clear"), [this] { clearSources(); })
                               .tag(clearTag)
                               .style<QPushButton>([this](QPushButton *button) {
                                   clearButton = button;
                                   button->setObjectName(QStringLiteral("clearButton"));
                                   button->setIcon(SymbolIcons::icon(u"trash"));
                                   button->setToolTip(tr("Empty the list of files and folders"));
                               })}
              .layout({pin(sourceTitle, D::left, inset), pin(sourceTitle, D::top, 8),
                       below(sourceTable, sourceTitle, 4), pin(sourceTable, D::left, inset),
                       pin(sourceTable, D::right, inset), below(addTag, sourceTable, 6),
                       pin(addTag, D::left, inset), after(clearTag, addTag, 6),
                       sameCenterY({addTag, clearTag}), pin(addTag, D::bottom, 8)});

    const auto columnFragment
        = B::FragmentWall {heading(tr("Output Columns"), columnTitle),
                           B::EmbeddedControl(columnListTableViewController->view())
                               .tag(columnTable)
                               .height(110),
                           B::CheckBox(tr("Show the tags to add"), m_dataModel.showTagTableView)
                               .tag(tagToggle)}
              .layout({pin(columnTitle, D::left, inset), pin(columnTitle, D::top, 8),
                       below(columnTable, columnTitle, 4), pin(columnTable, D::left, inset),
                       pin(columnTable, D::right, inset), below(tagToggle, columnTable, 6),
                       pin(tagToggle, D::left, inset), pin(tagToggle, D::bottom, 8)});

    const auto tagFragment
        = B::DynamicFragmentWall<bool>::showWhen(
              AnyReadOnlyVariable<bool>(m_dataModel.showTagTableView),
              [](const bool &show) { return show; },
              {B::EmbeddedControl(tagListTableViewController->view()).tag(tagTable).height(190)})
              .layout({pin(tagTable, D::left, inset), pin(tagTable, D::right, inset),
                       pin(tagTable, D::top, 0), pin(tagTable, D::bottom, 8)});

    ImagePreviewConfiguration previewConfiguration;
    previewConfiguration.layoutPolicy = ImagePreviewLayoutPolicy::automaticSelectionCount;
    const auto previewFragment
        = B::FragmentWall {B::ImagePreview(previewConfiguration, m_dataModel._previewFilePaths,
                                           previewSelectedIndex)
                               .tag(preview)
                               .height(220)}
              .layout(pinEdges(preview, 6));

    auto assembly = ::build(BuildDirectiveList {B::Wall {
        B::ScrollView {
            B::ClipView {B::FragmentStack {sourceFragment, editorFragments(),
                                           B::HorizontalDivider(), columnFragment, tagFragment}
                             .style<FragmentStackView>([this](FragmentStackView *stack) {
                                 parameterStackView = stack;
                                 stack->setObjectName(QStringLiteral("parameterStackView"));
                             })}}
            .tag(scroll),
        B::FragmentStack {B::HorizontalDivider(), previewFragment}
            .tag(bottom)
            .style<FragmentStackView>([this](FragmentStackView *stack) {
                bottomParameterStackView = stack;
            })}.layout({pin(scroll, D::left), pin(scroll, D::right), pin(scroll, D::top),
                        below(bottom, scroll), pin(bottom, D::left), pin(bottom, D::right),
                        pin(bottom, D::bottom)})});
    assembly->activate();
    // The editors' captions share one column.
    EditorStyle::alignCaptionColumns(parameterStackView);
    QWidget *side = assembly->view();
    side->setObjectName(QStringLiteral("parameterSide"));
    // Narrower than 340 the editors' buttons are cut; wider than the editors need is wasted. A
    // small window keeps its room for the table and the map.
    const int scrollBar = side->style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    side->setMinimumWidth(340);
    m_parameterSideWidth
        = std::clamp(parameterStackView->sizeHint().width() + scrollBar + 2, 340, 420);
    m_assemblies.push_back(assembly);
    return side;
}

BuildDirectiveList MainContentViewController::editorFragments()
{
    // Scan, sort, stepper, GPS, the four location fields, pins and the output settings, between
    // the sources and the columns.
    return ParameterSide::fragments(m_dataModel, m_outputEngine, *pinAndStepperController, [this] {
        GeotagDialog::run(
            view()->window(),
            GeotagDialog::filesToGeotag(m_dataModel.selectedNodes(), *m_outputEngine));
    });
}

QWidget *MainContentViewController::buildOverviewPanel()
{
    const LayoutTag modes("previewModes"), tabs("previewTabs"), status("statusLine"),
        waitLabel("waitLabel"), items("itemsHost"), map("mapHost"), vertical("vertical"),
        horizontal("horizontal"), popup("categoryPopup"), pane("infoPane"), overview("overview");

    itemsTableHost = makeHost(QStringLiteral("itemsTableHost"));
    mapHost = makeHost(QStringLiteral("mapHost"));
    combinedTableHost = makeHost(QStringLiteral("combinedTableHost"));
    combinedMapHost = makeHost(QStringLiteral("combinedMapHost"));
    horizontalTableHost = makeHost(QStringLiteral("horizontalTableHost"));
    horizontalMapHost = makeHost(QStringLiteral("horizontalMapHost"));
    QSplitter *verticalSplit = makeCombined(Qt::Vertical, combinedTableHost, combinedMapHost,
                                            QStringLiteral("combinedWall"));
    QSplitter *horizontalSplit
        = makeCombined(Qt::Horizontal, horizontalTableHost, horizontalMapHost,
                       QStringLiteral("combinedHorizontalWall"));
    horizontalSplit->setSizes({330, 600});
    horizontalTableHost->layout()->addWidget(minimalPreviewTableViewController->view());

    // The category menu counts its separators as entries, as the stored index does.
    infoPaneCategoryPopup = new QComboBox;
    infoPaneCategoryPopup->setObjectName(QStringLiteral("infoPaneCategoryPopup"));
    infoPaneCategoryPopup->setToolTip(tr("The tags the info pane shows"));
    for (const QString &category : TagManager::shared().localizedTagCategories()) {
        if (category == QLatin1String("-"))
            infoPaneCategoryPopup->insertSeparator(infoPaneCategoryPopup->count());
        else
            infoPaneCategoryPopup->addItem(category);
    }
    const int category = m_dataModel.infoPaneCategory->value();
    infoPaneCategoryPopup->setCurrentIndex(
        category >= 0 && category < infoPaneCategoryPopup->count() ? category : 0);
    connect(infoPaneCategoryPopup, &QComboBox::currentIndexChanged, this,
            [this](int index) { m_dataModel.infoPaneCategory->setValue(index); });

    auto statusText = std::make_shared<StraightVariable<QString>>(QString());
    auto assembly = ::build(BuildDirectiveList {B::SplitView {
        B::Wall {
            B::SegmentedControl(
                {tr("Items"), tr("Map"), tr("Items above Map"), tr("Items beside Map")},
                m_dataModel.previewMode)
                .tag(modes)
                .style<SegmentedControlBrick>([this](SegmentedControlBrick *control) {
                    previewModeControl = control;
                    control->setObjectName(QStringLiteral("previewModeControl"));
                    const QStringList tips {tr("The list of items (Ctrl+1)"),
                                            tr("The map (Ctrl+2)"),
                                            tr("The list above the map (Ctrl+3)"),
                                            tr("The names beside the map (Ctrl+4)")};
                    for (int i = 0; i < control->segmentCount(); ++i)
                        control->segment(i)->setToolTip(tips.value(i));
                }),
            B::TabWall {
                B::Tab(tr("Waiting"),
                       {B::StaticLabel(tr("Reading the list…")).tag(waitLabel).centered()})
                    .layout({pin(waitLabel, D::left, 20), pin(waitLabel, D::right, 20),
                             pin(waitLabel, D::top, 60)}),
                B::Tab(tr("Items"), {B::EmbeddedControl(itemsTableHost).tag(items)})
                    .layout(pinEdges(items)),
                B::Tab(tr("Map"), {B::EmbeddedControl(mapHost).tag(map)}).layout(pinEdges(map)),
                B::Tab(tr("Items and Map"), {B::EmbeddedControl(verticalSplit).tag(vertical)})
                    .layout(pinEdges(vertical)),
                B::Tab(tr("Items beside Map"),
                       {B::EmbeddedControl(horizontalSplit).tag(horizontal)})
                    .layout(pinEdges(horizontal))}
                .showingTab(AnyReadOnlyVariable<int>(m_dataModel.previewTabIndex))
                .tag(tabs)
                .style<TabWall>([this](TabWall *wall) {
                    tabWall = wall;
                    wall->setDocumentMode(true);
                }),
            B::DynamicSingleLineLabel(AnyReadOnlyVariable<QString>(statusText))
                .tag(status)
                .truncateMiddle()
                .style<SingleLineLabel>([this](SingleLineLabel *label) {
                    statusLine = label;
                    label->setObjectName(QStringLiteral("statusLine"));
                })}
            .tag(overview)
            .layout({pin(modes, D::left, 8), pin(modes, D::top, 6), pin(tabs, D::left),
                     pin(tabs, D::right), below(tabs, modes, 6), below(status, tabs, 4),
                     pin(status, D::left, 8), pin(status, D::right, 8), pin(status, D::bottom, 4)}),
        B::Wall {B::EmbeddedControl(infoPaneCategoryPopup).tag(popup),
                 B::EmbeddedControl(infoPaneViewController->view()).tag(pane)}
            .layout({pin(popup, D::left, 8), pin(popup, D::top, 4), below(pane, popup, 4),
                     pin(pane, D::left), pin(pane, D::right), pin(pane, D::bottom)})
            .style<QWidget>([this](QWidget *wall) { infoPaneView = wall; })}});
    assembly->activate();
    splitView = qobject_cast<BriskSplitView *>(assembly->view());
    splitView->setObjectName(QStringLiteral("splitView"));
    m_assemblies.push_back(assembly);
    // The tick writes the label itself; the variable only gave the label its binding.
    m_assemblies.push_back(statusText);
    return splitView;
}

void MainContentViewController::setupSidebarListeners()
{
    // The views of the tab follow the tab; a wait leaves them where they are.
    m_dataModel.previewTabIndex->addHotListener([this, alive = QPointer(this)](const int &index) {
        if (alive && index != DataModel::previewTabWait)
            reparentViews(PreviewTab(index));
    });
    m_dataModel._selectedNodes->addColdListener(
        [this, alive = QPointer(this)](const QList<NodePtr> &nodes) {
            if (!alive)
                return;
            if (!m_selectionChangedFromTable) {
                selectRowsAccordingToCurrentSelectionVariables();
                scrollToFirstSelectedItemIfNeeded();
            }
            QStringList paths;
            paths.reserve(nodes.size());
            for (const NodePtr &node : nodes)
                paths.append(node->absolutePath);
            previewSelectedIndex->setValue(0);
            m_dataModel._previewFilePaths->setValue(paths);
        });
    m_dataModel.infoPaneCategory->addColdListener([this, alive = QPointer(this)](const int &index) {
        if (alive && infoPaneCategoryPopup && infoPaneCategoryPopup->currentIndex() != index)
            infoPaneCategoryPopup->setCurrentIndex(index);
    });
}

void MainContentViewController::setupMapListeners()
{
    // The one map view. The delegate follows the selection itself and reaches the tables
    // through MainContentViewing; the window moves the view between the walls of the tab shown.
    // Its page waits for createMapPage(), so that the web engine starts after the first paint.
    if (!m_mapDelegate)
        return;
    MapWebView::Options options;
    options.online = MapWebView::onlineSetting();
    auto *map = new MapWidget(m_dataModel, *m_mapDelegate, options, Geocoder::shared(), nullptr,
                              MapWidget::PageCreation::onRequest);
    map->setObjectName(QStringLiteral("mapView"));
    map->setPinController(pinAndStepperController.get());
    setMapView(map);
}

void MainContentViewController::createMapPage()
{
    if (MapWidget *map = mapWidget())
        map->createPage();
}

MapWidget *MainContentViewController::mapWidget() const
{
    return qobject_cast<MapWidget *>(m_mapView.data());
}

void MainContentViewController::setMapView(QWidget *mapView)
{
    m_mapView = mapView;
    if (previousTabIndex)
        reparentViews(*previousTabIndex);
    else
        moveInto(mapView, mapHost);
}

void MainContentViewController::reparentViews(PreviewTab tab)
{
    QWidget *table = previewTableViewController ? previewTableViewController->view() : nullptr;
    switch (tab) {
    case PreviewTab::wait:
        return;
    case PreviewTab::items:
        moveInto(table, itemsTableHost);
        break;
    case PreviewTab::map:
        moveInto(m_mapView, mapHost);
        break;
    case PreviewTab::vertical:
        moveInto(table, combinedTableHost);
        moveInto(m_mapView, combinedMapHost);
        break;
    case PreviewTab::combinedHorizontal:
        // The minimal table stands beside the map; the full one waits in the items tab.
        moveInto(table, itemsTableHost);
        moveInto(m_mapView, horizontalMapHost);
        break;
    }
    previousTabIndex = tab;
    // A selection made in the other table left this one as it was: it catches up now.
    shownTable().selectRows(m_dataModel.selectedNodes());
    scrollToFirstSelectedItemIfNeeded();
}

PreviewTab MainContentViewController::shownPreviewTab() const
{
    return previousTabIndex.value_or(PreviewTab::wait);
}

void MainContentViewController::setSelectionChangedFromTable(bool fromTable)
{
    m_selectionChangedFromTable = fromTable;
}

void MainContentViewController::selectRowsAccordingToCurrentSelectionVariables()
{
    const QList<NodePtr> &nodes = m_dataModel.selectedNodes();
    previewTableViewController->selectRows(nodes);
    minimalPreviewTableViewController->selectRows(nodes);
}

void MainContentViewController::scrollToFirstSelectedItemIfNeeded()
{
    shownTable().scrollToFirstSelectedRow();
}

PreviewTableViewController &MainContentViewController::shownTable() const
{
    if (previousTabIndex == PreviewTab::combinedHorizontal)
        return *minimalPreviewTableViewController;
    return *previewTableViewController;
}

int MainContentViewController::numberOfRows() const
{
    return int(shownTable().previewTableViewDataSource->nodes().size());
}

NodePtr MainContentViewController::nodeAtRow(int row) const
{
    const QList<NodePtr> &nodes = shownTable().previewTableViewDataSource->nodes();
    return row >= 0 && row < nodes.size() ? nodes.at(row) : NodePtr();
}

QList<int> MainContentViewController::selectedRowIndexes() const
{
    QList<int> rows;
    for (const QModelIndex &index : shownTable().tableView->selectionModel()->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

void MainContentViewController::selectRowIndexes(const QList<int> &rows, bool byExtendingSelection)
{
    PreviewTableViewController &table = shownTable();
    QAbstractItemModel *model = table.tableView->model();
    const int lastColumn = model->columnCount() - 1;
    QItemSelection selection;
    for (int row : rows) {
        if (row >= 0 && row < model->rowCount())
            selection.select(model->index(row, 0), model->index(row, lastColumn));
    }
    // The table's own handler announces the selection, as a click would.
    table.tableView->selectionModel()->select(
        selection,
        byExtendingSelection ? QItemSelectionModel::Select : QItemSelectionModel::ClearAndSelect);
    if (!rows.isEmpty())
        table.tableView->selectionModel()->setCurrentIndex(model->index(rows.first(), 0),
                                                           QItemSelectionModel::NoUpdate);
    table.scrollToFirstSelectedRow();
}

void MainContentViewController::selectItem(bool forwards)
{
    pinAndStepperController->selectItem(forwards);
}

void MainContentViewController::addSource()
{
    // The platform's dialogs choose files or folders, never both: Qt's own dialog does, with
    // its lists allowing several items and its Open button taking whatever is selected.
    QFileDialog dialog(view(), tr("Add Files and Folders"));
    dialog.setObjectName(QStringLiteral("addSourceDialog"));
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setLabelText(QFileDialog::Accept, tr("Add"));
    QStringList chosen;
    const auto views = dialog.findChildren<QAbstractItemView *>();
    for (QAbstractItemView *list : views) {
        if (qobject_cast<QListView *>(list) || qobject_cast<QTreeView *>(list))
            list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    }
    auto *buttons = dialog.findChild<QDialogButtonBox *>();
    QPushButton *accept = buttons ? buttons->button(QDialogButtonBox::Open) : nullptr;
    if (accept) {
        accept->disconnect();
        connect(accept, &QPushButton::clicked, &dialog, [&dialog, &chosen] {
            auto *list = dialog.findChild<QListView *>(QStringLiteral("listView"));
            auto *tree = dialog.findChild<QTreeView *>(QStringLiteral("treeView"));
            QAbstractItemView *shown
                = list && list->isVisible() ? static_cast<QAbstractItemView *>(list) : tree;
            if (shown) {
                auto *proxy = shown->model();
                for (const QModelIndex &index : shown->selectionModel()->selectedRows()) {
                    const QString path
                        = proxy->data(index, QFileSystemModel::FilePathRole).toString();
                    if (!path.isEmpty())
                        chosen.append(path);
                }
            }
            // Nothing selected in the list: the folder shown, or the typed name.
            if (chosen.isEmpty())
                chosen = dialog.selectedFiles();
            static_cast<QDialog &>(dialog).done(QDialog::Accepted);
        });
    }
    if (dialog.exec() != QDialog::Accepted)
        return;
    if (!accept)
        chosen = dialog.selectedFiles();
    if (!chosen.isEmpty())
        m_dataModel.sourceList.add(chosen, true);
}

void MainContentViewController::clearSources()
{
    m_dataModel.sourceList.deleteAll();
    m_dataModel.setSelectedNodes({});
}

bool MainContentViewController::isInfoPaneCollapsed() const
{
    return splitView && infoPaneView && splitView->isSubviewCollapsed(infoPaneView);
}

void MainContentViewController::toggleInfoPane()
{
    if (!splitView)
        return;
    const int height = splitView->extent();
    const int thickness = splitView->dividerThickness();
    if (isInfoPaneCollapsed())
        splitView->setPosition(height - thickness - 150, 0);
    else
        splitView->setPosition(height - thickness, 0);
}

void MainContentViewController::placeInfoPaneAtLaunch()
{
    if (!splitView)
        return;
    const int height = splitView->extent();
    const int thickness = splitView->dividerThickness();
    if (m_dataModel.infoPaneIsCollapsed->value()) {
        splitView->setPosition(height - thickness, 0);
        return;
    }
    const double paneHeight = std::clamp(m_dataModel.infoPaneHeight->value(), 150.0, 400.0);
    splitView->setPosition(height - thickness - paneHeight, 0);
}

void MainContentViewController::viewDidAppear()
{
    if (!std::exchange(m_infoPanePlaced, true))
        placeInfoPaneAtLaunch();
    if (windowUITimer)
        windowUITimer->invalidate();
    windowUITimer = SmartTimerWrapper::wrapTimer(
        0.1, SmartTimerWrapper::Repeats::Yes, [this, alive = QPointer(this)](SmartTimerWrapper &) {
            if (alive)
                updateStatusLine();
        });
    updateStatusLine();
}

void MainContentViewController::updateStatusLine()
{
    if (!statusLine)
        return;
    statusLine->setStringValue(StatusLine::text(
        m_outputEngine->createOutputEngineViewModel(), WriteEngine::shared().createViewModel(),
        int(m_dataModel.selectedNodes().size()), Clock::current().currentDate()));
}

QString MainContentViewController::statusText() const
{
    return statusLine ? statusLine->stringValue() : QString();
}
