#include "MainWindow.h"

#include "AppDelegate.h"
#include "GeotagDialog.h"
#include "MainContentViewController.h"
#include "MapWidget.h"
#include "UndoActions.h"
#include "commons/SparkleManagerHuskFacade.h"
#include "editors/OutputSettingsFragment.h"
#include "location/PinAndStepperController.h"
#include "map/MapOverlay.h"
#include "map/MapOverlayMode.h"
#include "session/DataModel.h"
#include "session/FlatFileList.h"
#include "session/OutputEngine.h"
#include "session/StepperMode.h"
#include "writing/UndoManager.h"

#include <QAbstractItemView>
#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QHash>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPointer>
#include <QScreen>
#include <QTextEdit>

namespace {

// The Edit menu's standard entries act on the widget that has the focus, as its own keys do.
void sendToFocusWidget(const char *slot)
{
    QWidget *focus = QApplication::focusWidget();
    if (!focus)
        return;
    if (qobject_cast<QLineEdit *>(focus) || qobject_cast<QTextEdit *>(focus)
        || qobject_cast<QPlainTextEdit *>(focus)) {
        QMetaObject::invokeMethod(focus, slot);
    } else if (auto *view = qobject_cast<QAbstractItemView *>(focus);
               view && qstrcmp(slot, "selectAll") == 0) {
        view->selectAll();
    }
}

void deleteInFocusWidget()
{
    if (auto *line = qobject_cast<QLineEdit *>(QApplication::focusWidget()))
        line->del();
}

} // namespace

std::unique_ptr<MainWindow> MainWindow::makeMainWindow(DataModel &dataModel,
                                                       std::shared_ptr<OutputEngine> outputEngine,
                                                       MapDelegate *mapDelegate)
{
    return std::make_unique<MainWindow>(dataModel, std::move(outputEngine), mapDelegate);
}

MainWindow::MainWindow(DataModel &dataModel, std::shared_ptr<OutputEngine> outputEngine,
                       MapDelegate *mapDelegate)
    : m_dataModel(dataModel)
    , m_outputEngine(outputEngine)
{
    setObjectName(QStringLiteral("mainWindow"));
    setWindowTitle(QStringLiteral("Palomet"));
    setWindowIcon(QIcon::fromTheme(QStringLiteral("org.palomet.Palomet"),
                                   QIcon(QStringLiteral(":/mainwindow/palomet.svg"))));
    mainContentViewController = NiblessViewController::make<MainContentViewController>(
        dataModel, std::move(outputEngine), mapDelegate);
    setCentralWidget(mainContentViewController->buildIfNeeded());
    // An undo re-reads through the list's own nodes, so that the table and the editors hear of
    // it; the index is rebuilt when the list is replaced.
    UndoManager::shared().setNodeLookup(
        [engine = m_outputEngine,
         index = std::make_shared<std::pair<FlatFileListPtr, QHash<QString, NodePtr>>>()](
            const QString &path) -> NodePtr {
            const FlatFileListPtr list = engine->flatFileList();
            if (!list)
                return nullptr;
            if (index->first != list) {
                index->first = list;
                index->second.clear();
                for (const NodePtr &node : list->files)
                    index->second.insert(node->absolutePath, node);
            }
            return index->second.value(path);
        });
    installEventFilter(this);
    // The map's web engine takes about a second to start: it starts once the window is on
    // screen, after the files given at start have gone to the scan. The map's tab is never the
    // one shown before then, since the window waits for data until a list has been read.
    connect(
        this, &MainWindow::firstPainted, this,
        [this] { mainContentViewController->createMapPage(); }, Qt::QueuedConnection);
    // 1280 by 800 where the screen allows it, never larger than the screen.
    QSize size(1280, 800);
    if (const QScreen *screen = QGuiApplication::primaryScreen())
        size = size.boundedTo(screen->availableSize() * 0.92);
    resize(size);
}

bool MainWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (!m_painted && watched == this && event->type() == QEvent::Paint) {
        m_painted = true;
        removeEventFilter(this);
        // Told on the next turn, once the paint has reached the screen.
        QMetaObject::invokeMethod(this, &MainWindow::firstPainted, Qt::QueuedConnection);
    }
    return QMainWindow::eventFilter(watched, event);
}

MainWindow::~MainWindow()
{
    // The views go before their controller, which holds the listeners' targets.
    delete takeCentralWidget();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    // The window closes when the application quits; until the writes are done, it stays.
    event->ignore();
    AppDelegate::shared().terminate();
}

void MainWindow::buildMenus(AppDelegate &delegate)
{
    QMenuBar *bar = menuBar();
    bar->clear();
    MainContentViewController &content = *mainContentViewController;
    const auto add = [](QMenu *menu, const QString &title, const QString &name,
                        const QList<QKeySequence> &keys, std::function<void()> action) {
        QAction *entry = menu->addAction(title);
        entry->setObjectName(name);
        entry->setShortcuts(keys);
        QObject::connect(entry, &QAction::triggered, menu,
                         [action = std::move(action)] { action(); });
        return entry;
    };

    QMenu *file = bar->addMenu(tr("&File"));
    add(file, tr("&Open…"), QStringLiteral("open"), {QKeySequence::Open},
        [&delegate] { delegate.open(); });
    QList<QKeySequence> reloadKeys {QKeySequence(Qt::CTRL | Qt::Key_R)};
    if (QKeySequence(QKeySequence::Refresh) != reloadKeys.first())
        reloadKeys << QKeySequence(QKeySequence::Refresh);
    add(file, tr("&Reload"), QStringLiteral("reload"), reloadKeys, [&delegate] {
        delegate.reload();
    })->setToolTip(tr("Read every file again"));
    file->addSeparator();
    file->addAction(GeotagDialog::createAction(this, [this] {
        return GeotagDialog::filesToGeotag(m_dataModel.selectedNodes(), *m_outputEngine);
    }));
    addOutputCommands(file);
    file->addSeparator();
    add(file, tr("&Quit"), QStringLiteral("quit"), {QKeySequence::Quit}, [&delegate] {
        delegate.terminate();
    })->setMenuRole(QAction::QuitRole);

    QMenu *edit = bar->addMenu(tr("&Edit"));
    // Undo and Redo reverse the last written change; a text field keeps its own Ctrl+Z.
    (new UndoActions(edit))->addTo(edit);
    edit->addSeparator();
    add(edit, tr("Cu&t"), QStringLiteral("cut"), {QKeySequence::Cut},
        [] { sendToFocusWidget("cut"); });
    add(edit, tr("&Copy"), QStringLiteral("copy"), {QKeySequence::Copy},
        [] { sendToFocusWidget("copy"); });
    add(edit, tr("&Paste"), QStringLiteral("paste"), {QKeySequence::Paste},
        [] { sendToFocusWidget("paste"); });
    add(edit, tr("&Delete"), QStringLiteral("delete"), {}, [] { deleteInFocusWidget(); });
    add(edit, tr("Select &All"), QStringLiteral("selectAll"), {QKeySequence::SelectAll},
        [] { sendToFocusWidget("selectAll"); });
    edit->addSeparator();
    delegate.menuItemManager.fillMenu(edit, {MenuItemManager::preferencesGroup});
    if (QAction *preferences
        = delegate.menuItemManager.actions(MenuItemManager::preferencesGroup).value(0))
        preferences->setShortcut(QKeySequence::Preferences);

    QMenu *view = bar->addMenu(tr("&View"));
    auto *modes = new QActionGroup(view);
    const QStringList modeTitles {tr("&Items"), tr("&Map"), tr("Items &above Map"),
                                  tr("Items &beside Map")};
    const QStringList modeNames {QStringLiteral("showItems"), QStringLiteral("showMap"),
                                 QStringLiteral("showItemsAboveMap"),
                                 QStringLiteral("showItemsBesideMap")};
    for (int mode = 0; mode < modeTitles.size(); ++mode) {
        QAction *entry = add(view, modeTitles.at(mode), modeNames.at(mode),
                             {QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + mode))},
                             [this, mode] { m_dataModel.previewMode->setValue(mode); });
        entry->setCheckable(true);
        modes->addAction(entry);
    }
    m_dataModel.previewMode->addHotListener([modes](const int &mode) {
        if (QAction *entry = modes->actions().value(mode))
            entry->setChecked(true);
    });
    view->addSeparator();
    addMapModes(view);
    add(view, tr("Toggle Info &Pane"), QStringLiteral("toggleInfoPane"),
        {QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_I)}, [&delegate] { delegate.toggleInfoPane(); });
    view->addSeparator();
    QMenu *stepper = view->addMenu(tr("&Step Through"));
    auto *stepperModes = new QActionGroup(stepper);
    const QList<std::pair<StepperMode, void (AppDelegate::*)()>> commands {
        {StepperMode::inactive, &AppDelegate::filterInactive},
        {StepperMode::sublocation, &AppDelegate::filterBySublocation},
        {StepperMode::city, &AppDelegate::filterByCity},
        {StepperMode::province, &AppDelegate::filterByProvince},
        {StepperMode::country, &AppDelegate::filterByCountry}};
    for (const auto &[mode, command] : commands) {
        const auto entry
            = std::find_if(stepperModeEntries().cbegin(), stepperModeEntries().cend(),
                           [mode](const StepperModeEntry &e) { return e.mode == mode; });
        QAction *action = add(stepper, tr(entry->popupTitle),
                              QString::fromLatin1(entry->menuCommand).chopped(1), {},
                              [&delegate, command] { (delegate.*command)(); });
        action->setCheckable(true);
        stepperModes->addAction(action);
    }
    m_dataModel._stepperMode->addHotListener([stepperModes](const StepperMode &mode) {
        const auto &entries = stepperModeEntries();
        for (int i = 0; i < entries.size(); ++i) {
            if (entries.at(i).mode == mode)
                stepperModes->actions().value(i)->setChecked(true);
        }
    });

    QMenu *go = bar->addMenu(tr("&Go"));
    add(go, tr("&Next Item or Group"), QStringLiteral("nextItemOrGroup"), {QKeySequence::Forward},
        [&delegate] { delegate.nextItemOrGroup(); });
    add(go, tr("&Previous Item or Group"), QStringLiteral("previousItemOrGroup"),
        {QKeySequence::Back}, [&delegate] { delegate.previousItemOrGroup(); });
    go->addSeparator();
    add(go, tr("Next P&in"), QStringLiteral("nextPin"),
        {QKeySequence(Qt::ALT | Qt::SHIFT | Qt::Key_Right)},
        [&content] { content.pinAndStepperController->selectNextPin(); });
    add(go, tr("Previous Pi&n"), QStringLiteral("previousPin"),
        {QKeySequence(Qt::ALT | Qt::SHIFT | Qt::Key_Left)},
        [&content] { content.pinAndStepperController->selectPreviousPin(); });

    QMenu *help = bar->addMenu(tr("&Help"));
    delegate.menuItemManager.fillMenu(
        help, {SparkleManagerHuskFacade::groupName, MenuItemManager::helpGroup});
}

void MainWindow::addOutputCommands(QMenu *file)
{
    // The same commands as the output settings' buttons, through their fragment, so that the
    // menu and the buttons agree on when the text is ready.
    QAction *copy = file->addAction(tr("&Copy Output"));
    copy->setObjectName(QStringLiteral("copyOutput"));
    copy->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C));
    copy->setToolTip(tr("Copy the list's text in the chosen output format"));
    QAction *save = file->addAction(tr("&Save Output…"));
    save->setObjectName(QStringLiteral("saveOutput"));
    save->setShortcut(QKeySequence::Save);
    save->setToolTip(tr("Save the list's text in the chosen output format"));
    const auto fragment = [this] {
        QWidget *content = mainContentViewController->view();
        return content ? content->findChild<OutputSettingsFragment *>() : nullptr;
    };
    // The fragment keeps its buttons' state up to date; the entries take it when the menu opens.
    const auto refresh = [this, copy, save] {
        QWidget *content = mainContentViewController->view();
        auto *button
            = content ? content->findChild<QWidget *>(QStringLiteral("copyOutputButton")) : nullptr;
        const bool ready = button && button->isEnabled();
        copy->setEnabled(ready);
        save->setEnabled(ready);
    };
    connect(file, &QMenu::aboutToShow, this, refresh);
    connect(copy, &QAction::triggered, this, [fragment] {
        if (OutputSettingsFragment *output = fragment())
            output->copyOutput();
    });
    connect(save, &QAction::triggered, this, [fragment] {
        if (OutputSettingsFragment *output = fragment())
            output->saveOutput();
    });
}

void MainWindow::addMapModes(QMenu *view)
{
    MapWidget *map = mainContentViewController->mapWidget();
    if (!map)
        return;
    QMenu *tools = view->addMenu(tr("Map &Tool"));
    auto *group = new QActionGroup(tools);
    const QList<std::pair<MapOverlayMode, void (MapWidget::*)()>> modes {
        {MapOverlayMode::areaFileSelector, &MapWidget::switchToRubberBandMode},
        {MapOverlayMode::fileSelector, &MapWidget::switchToPointerMode},
        {MapOverlayMode::addPin, &MapWidget::switchToDropPinMode},
        {MapOverlayMode::selectPin, &MapWidget::switchToSelectPinMode},
        {MapOverlayMode::deletePin, &MapWidget::switchToDeletePinMode}};
    for (const auto &[mode, command] : modes) {
        const MapOverlayModeInfo &info = MapOverlayModeInfo::of(mode);
        QAction *entry = tools->addAction(info.label);
        entry->setObjectName(info.action);
        entry->setToolTip(info.toolTip);
        entry->setCheckable(true);
        group->addAction(entry);
        connect(entry, &QAction::triggered, map, [map, command] { (map->*command)(); });
    }
    const QPointer<QActionGroup> alive = group;
    map->overlay()._overlayMode->addHotListener([alive](const MapOverlayMode &mode) {
        QAction *entry = alive ? alive->actions().value(int(mode)) : nullptr;
        if (entry)
            entry->setChecked(true);
    });
    view->addSeparator();
}
