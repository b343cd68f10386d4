#include "AppDelegate.h"

#include "MainContentViewController.h"
#include "MainWindow.h"
#include "PreferencesDialog.h"
#include "WritingProgressWindow.h"
#include "acquisition/ExifToolHelper.h"
#include "bricks/walls/BriskSplitView.h"
#include "commons/CommonsHuskFacade.h"
#include "commons/Log.h"
#include "commons/SparkleManagerHuskFacade.h"
#include "map/MapDelegate.h"
#include "metadata/MetadataStorage.h"
#include "platform/AlertPresenter.h"
#include "platform/MainQueue.h"
#include "platform/UserDefaults.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"
#include "writing/WriteEngine.h"

#include <QApplication>
#include <QDesktopServices>
#include <QSocketNotifier>
#include <QUrl>

#include <csignal>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

int s_signalSockets[2] = {-1, -1};

void forwardSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(s_signalSockets[0], &byte, 1);
}

AppDelegate *s_shared = nullptr;

} // namespace

AppDelegate::AppDelegate(QObject *parent)
    : SmartAppDelegate(AppDescription::ofThisBuild(), parent)
    , additionalWhiteList {QStringLiteral("GeolocationCity"), QStringLiteral("GeolocationCountry"),
                           QStringLiteral("GeolocationRegion"),
                           QStringLiteral("GeolocationSubregion"),
                           QStringLiteral("GeolocationFeatureCode")}
{
    s_shared = this;
    qApp->installEventFilter(this);
}

AppDelegate::~AppDelegate()
{
    qApp->removeEventFilter(this);
    if (s_shared == this)
        s_shared = nullptr;
    // The window's views listen to the model and the engine: they go first.
    mainWindow.reset();
    if (mapDelegate)
        mapDelegate->uninstall();
    mapDelegate.reset();
}

AppDelegate &AppDelegate::shared()
{
    if (!s_shared)
        qFatal("AppDelegate::shared: there is no application delegate");
    return *s_shared;
}

void AppDelegate::finishInitialization()
{
    // The application's description came with the construction. The shared parts go first:
    // their Help entries come before the application's.
    commonsHuskFacade = std::make_unique<CommonsHuskFacade>();
    willFinishLaunchingCallbackList.append(
        [this](SmartAppDelegate &delegate, const AppNotification &) {
            commonsHuskFacade->finishInitialization(delegate);
        });
    // Update checks.
    sparkleManagerFacade = std::make_unique<SparkleManagerHuskFacade>();
    sparkleManagerFacade->finishInitialization(*this);
    // The window exists before the model's listeners run.
    willFinishLaunchingCallbackList.append([this](SmartAppDelegate &, const AppNotification &) {
        mainWindow = MainWindow::makeMainWindow(*dataModel, outputEngine, mapDelegate.get());
        window = mainWindow.get();
    });
    // The session and its pipeline, listening once the window is there.
    dataModel = std::make_unique<DataModel>();
    outputEngine = OutputEngine::create(dataModel.get());
    // The readers put their markers on the map from the first file on.
    mapDelegate = std::make_unique<MapDelegate>(*dataModel);
    mapDelegate->setupMapListeners();
    mapDelegate->install();
    willFinishLaunchingCallbackList.append(
        [this](SmartAppDelegate &, const AppNotification &) { outputEngine->startListening(); });
    // The list of sources never survives the process.
    willTerminateCallbackList.append([this](SmartAppDelegate &, const AppNotification &) {
        UserDefaults::standard().removeObjectForKey(dataModel->sourceList.storageKey);
        UserDefaults::standard().synchronize();
    });
    willFinishLaunchingCallbackList.append(
        [this](SmartAppDelegate &, const AppNotification &) { addHelpEntries(); });
    // The geocoder's answers are read with the other tags.
    willFinishLaunchingCallbackList.append([this](SmartAppDelegate &, const AppNotification &) {
        ExifToolHelper::sharedInstance().appendToWhiteList(additionalWhiteList);
    });
    willTerminateCallbackList.append(
        [this](SmartAppDelegate &, const AppNotification &) { saveInfoPane(); });

    // Once every part has added its menu entries, the window takes them and shows itself.
    willFinishLaunchingCallbackList.append([this](SmartAppDelegate &, const AppNotification &) {
        menuItemManager
            .addItem(MenuItemManager::preferencesGroup, tr("Preferences…"),
                     [this] { showPreferences(); })
            ->setMenuRole(QAction::PreferencesRole);
        mainWindow->buildMenus(*this);
        mainWindow->show();
    });
}

void AppDelegate::addHelpEntries()
{
    menuItemManager.addSeparator(MenuItemManager::helpGroup);
    QAction *action = menuItemManager.addItem(MenuItemManager::helpGroup, tr("Troubleshooting…"),
                                              [this] { showTroubleshooting(); });
    action->setObjectName(QStringLiteral("showTroubleshooting"));
}

void AppDelegate::saveInfoPane()
{
    if (!mainWindow || !dataModel)
        return;
    MainContentViewController &content = *mainWindow->mainContentViewController;
    if (!content.infoPaneView || !content.splitView)
        return;
    if (content.isInfoPaneCollapsed()) {
        dataModel->infoPaneIsCollapsed->setValue(true);
        return;
    }
    dataModel->infoPaneIsCollapsed->setValue(false);
    dataModel->infoPaneHeight->setValue(std::max(200.0, double(content.infoPaneView->height())));
}

MainWindow &AppDelegate::requireMainWindow() const
{
    if (!mainWindow)
        qFatal("AppDelegate: a command arrived before the main window exists");
    return *mainWindow;
}

DataModel &AppDelegate::requireDataModel() const
{
    if (!dataModel)
        qFatal("AppDelegate: a command arrived before the data model exists");
    return *dataModel;
}

void AppDelegate::open()
{
    requireMainWindow().mainContentViewController->addSource();
}

QString AppDelegate::troubleshootingURL() const
{
    if (appDescription.websiteURL.isEmpty())
        return {};
    QString site = appDescription.websiteURL;
    if (!site.endsWith(QLatin1Char('/')))
        site += QLatin1Char('/');
    return site + QStringLiteral("troubleshooting");
}

void AppDelegate::showTroubleshooting()
{
    const QUrl url(troubleshootingURL(), QUrl::StrictMode);
    if (url.isValid() && !url.isEmpty() && (url.scheme() == u"https" || url.scheme() == u"http")) {
        QDesktopServices::openUrl(url);
        return;
    }
    // Without a web site, the help that needs none.
    AlertPresenter::show(
        {tr("Troubleshooting"),
         tr("Palomet writes its messages to the standard error of the terminal it was started "
            "from: start it with \"palomet\" in a terminal to read them.\n\nIts settings are in "
            "%1; a damaged file there is ignored and each setting takes its default.\n\nFiles "
            "are written through ExifTool; a file that could not be written is named in an "
            "alert with the reason, and is left as it was.")
             .arg(UserDefaults::standard().filePath()),
         {tr("OK")},
         {}});
}

void AppDelegate::filterInactive()
{
    requireDataModel().setStepperMode(StepperMode::inactive);
}

void AppDelegate::filterBySublocation()
{
    requireDataModel().setStepperMode(StepperMode::sublocation);
}

void AppDelegate::filterByProvince()
{
    requireDataModel().setStepperMode(StepperMode::province);
}

void AppDelegate::filterByCountry()
{
    requireDataModel().setStepperMode(StepperMode::country);
}

void AppDelegate::filterByCity()
{
    requireDataModel().setStepperMode(StepperMode::city);
}

void AppDelegate::nextItemOrGroup()
{
    requireMainWindow().mainContentViewController->selectItem(true);
}

void AppDelegate::previousItemOrGroup()
{
    requireMainWindow().mainContentViewController->selectItem(false);
}

void AppDelegate::toggleInfoPane()
{
    requireMainWindow().mainContentViewController->toggleInfoPane();
}

void AppDelegate::reload()
{
    DataModel &model = requireDataModel();
    const QStringList sources = model.sourceList.value();
    MetadataStorage::shared().clear();
    model.sourceList.write({});
    model.sourceList.add(sources, true);
}

void AppDelegate::showFileTab()
{
    requireDataModel().previewMode->setValue(0);
}

void AppDelegate::showTextOutputTab()
{
    requireDataModel().previewMode->setValue(1);
}

void AppDelegate::showPreferences()
{
    PreferencesDialog::showPreferences(&requireMainWindow(), *this);
}

void AppDelegate::openFiles(const QStringList &paths)
{
    MainQueue::post([this, paths, alive = QPointer(this)] {
        if (alive && dataModel)
            dataModel->sourceList.add(paths, true);
    });
}

void AppDelegate::openFilesOnceWindowIsPainted(const QStringList &paths)
{
    if (paths.isEmpty())
        return;
    didFinishLaunchingCallbackList.append(
        [this, paths](SmartAppDelegate &, const AppNotification &) {
            if (mainWindow->hasBeenPainted()) {
                openFiles(paths);
                return;
            }
            connect(
                mainWindow.get(), &MainWindow::firstPainted, this,
                [this, paths] { openFiles(paths); }, Qt::SingleShotConnection);
        });
}

void AppDelegate::terminate()
{
    if (m_waitingForWrites || m_terminating)
        return;
    if (applicationShouldTerminate() == TerminateReply::terminateNow)
        replyToApplicationShouldTerminate(true);
}

AppDelegate::TerminateReply AppDelegate::applicationShouldTerminate()
{
    if (!WriteEngine::shared().hasPendingWrites())
        return TerminateReply::terminateNow;
    m_waitingForWrites = true;
    m_progressWindow = new WritingProgressWindow(mainWindow.get());
    m_progressWindow->show();
    // The wait runs on another thread; the event loop keeps turning, since the writes deliver
    // their results and their batches' ends on the main thread.
    std::thread([alive = QPointer(this)] {
        WriteEngine &engine = WriteEngine::shared();
        engine.flushImmediately();
        do {
            engine.operationQueue().waitUntilAllOperationsAreFinished();
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        } while (engine.hasPendingWrites());
        MainQueue::post([alive] {
            if (alive)
                alive->replyToApplicationShouldTerminate(true);
        });
    }).detach();
    return TerminateReply::terminateLater;
}

void AppDelegate::replyToApplicationShouldTerminate(bool shouldTerminate)
{
    m_waitingForWrites = false;
    if (m_progressWindow)
        m_progressWindow->deleteLater();
    if (!shouldTerminate)
        return;
    m_terminating = true;
    QCoreApplication::exit(0);
}

bool AppDelegate::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == qApp && event->type() == QEvent::Quit && !m_terminating) {
        terminate();
        return true;
    }
    return SmartAppDelegate::eventFilter(watched, event);
}

void AppDelegate::installSignalHandlers()
{
    if (s_signalSockets[0] >= 0)
        return;
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, s_signalSockets) != 0) {
        Log::line(QStringLiteral("Palomet: no signal handling: %1").arg(qt_error_string(errno)));
        return;
    }
    auto *notifier = new QSocketNotifier(s_signalSockets[1], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        char byte;
        [[maybe_unused]] const ssize_t read = ::read(s_signalSockets[1], &byte, 1);
        terminate();
    });
    struct sigaction action = {};
    action.sa_handler = forwardSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
}
