#include "AppDelegate.h"
#include "Appearance.h"
#include "MainWindow.h"
#include "MapWebView.h"
#include "QtAlertPresenter.h"
#include "QtBeeper.h"
#include "QtClipboardWriter.h"
#include "SingleInstance.h"
#include "commons/AppDescription.h"
#include "commons/ApplicationStart.h"
#include "platform/UserDefaults.h"
#include "preview/ThumbnailGenerator.h"
#include "session/DataModel.h"
#include "writing/ChangeManager.h"

#include <QApplication>
#include <QFileInfo>

int main(int argc, char *argv[])
{
    // QtWebEngine's switches must be in place before the application object exists.
    MapWebView::prepareProcess();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("palomet"));
    QApplication::setApplicationDisplayName(QStringLiteral("Palomet"));
    QApplication::setApplicationVersion(AppDescription::buildVersion());
    QApplication::setDesktopFileName(QStringLiteral("org.palomet.Palomet"));

    // The paths given to the program (the desktop file's %F) are opened as if dropped.
    QStringList paths;
    for (const QString &argument : QApplication::arguments().mid(1))
        paths << QFileInfo(argument).absoluteFilePath();

    // A Palomet already running takes the paths, and this start ends.
    SingleInstance instance;
    if (instance.handOverToRunningInstance(paths))
        return 0;

    ApplicationStart::installMetadataReaders();
    ApplicationStart::installWritePath();
    QtAlertPresenter alerts;
    AlertPresenter::install(&alerts);
    QtClipboardWriter clipboard;
    ClipboardWriter::install(&clipboard);
    QtBeeper beeper;
    Beeper::install(&beeper);
    Appearance::applyStoredModeAndFollowChanges();

    AppDelegate delegate;
    delegate.finishInitialization();
    ChangeManager::setDataModel(delegate.dataModel.get());
    // Each run starts from an empty list of sources; it is emptied at quit as well.
    delegate.dataModel->sourceList.deleteAll();
    instance.listen([&delegate](const QStringList &handedOver) {
        delegate.openFiles(handedOver);
        if (delegate.mainWindow) {
            delegate.mainWindow->raise();
            delegate.mainWindow->activateWindow();
        }
    });
    delegate.installSignalHandlers();
    delegate.openFilesOnceWindowIsPainted(paths);

    const int status = app.exec();
    ChangeManager::setDataModel(nullptr);
    Beeper::install(nullptr);
    ClipboardWriter::install(nullptr);
    AlertPresenter::install(nullptr);
    alerts.setParent(nullptr);
    // A thumbnail still being decoded would outlive the libraries it uses.
    ThumbnailGenerator::waitForWorkInFlight(2000);
    return status;
}
