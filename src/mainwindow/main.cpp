#include "FirstWindow.h"
#include "QtAlertPresenter.h"
#include "QtClipboardWriter.h"
#include "commons/AppDescription.h"
#include "commons/ApplicationStart.h"
#include "commons/CommonsHuskFacade.h"
#include "commons/SmartAppDelegate.h"
#include "commons/SparkleManagerHuskFacade.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"
#include "writing/ChangeManager.h"
#include "writing/WriteEngine.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("palomet"));
    QApplication::setApplicationDisplayName(QStringLiteral("Palomet"));
    QApplication::setOrganizationName(QStringLiteral("palomet"));
    QApplication::setApplicationVersion(AppDescription::buildVersion());

    ApplicationStart::installMetadataReaders();
    ApplicationStart::installWritePath();

    QtAlertPresenter alerts;
    AlertPresenter::install(&alerts);
    QtClipboardWriter clipboard;
    ClipboardWriter::install(&clipboard);

    DataModel dataModel;
    ChangeManager::setDataModel(&dataModel);
    std::shared_ptr<OutputEngine> engine = OutputEngine::create(&dataModel);
    FirstWindow window(dataModel, engine);
    alerts.setParent(&window);

    // The phases of the run: Help entries and launch counting, then the update checks; the
    // window's Help menu is built once every part has added its entries.
    SmartAppDelegate delegate(AppDescription::ofThisBuild());
    CommonsHuskFacade commons;
    delegate.willFinishLaunchingCallbackList.append(
        [&commons](SmartAppDelegate &d, const AppNotification &) {
            commons.finishInitialization(d);
        });
    SparkleManagerHuskFacade updates;
    updates.finishInitialization(delegate);
    delegate.didFinishLaunchingCallbackList.append(
        [&window](SmartAppDelegate &d, const AppNotification &) {
            QMenu *help = window.menuBar()->addMenu(QCoreApplication::translate("main", "&Help"));
            d.menuItemManager.fillMenu(
                help, {SparkleManagerHuskFacade::groupName, MenuItemManager::helpGroup});
        });
    window.show();

    // Each run starts from an empty source list; paths given to the program are what it opens.
    dataModel.sourceList.deleteAll();
    engine->startListening();
    QStringList paths;
    for (const QString &argument : QApplication::arguments().mid(1))
        paths << QFileInfo(argument).absoluteFilePath();
    if (!paths.isEmpty())
        window.openPaths(paths);

    const int status = app.exec();
    // Edits still on their way to the files are written before the program ends.
    if (WriteEngine::shared().hasPendingWrites())
        WriteEngine::shared().waitForCompletion();
    dataModel.sourceList.deleteAll();
    ClipboardWriter::install(nullptr);
    ChangeManager::setDataModel(nullptr);
    AlertPresenter::install(nullptr);
    return status;
}
