#pragma once

#include "WritingProgressWindow.h"
#include "commons/SmartAppDelegate.h"

#include <QPointer>
#include <QStringList>

#include <memory>

class CommonsHuskFacade;
class DataModel;
class MainWindow;
class MapDelegate;
class OutputEngine;
class QMainWindow;
class SparkleManagerHuskFacade;

// The root of the application: owns the session, the pipeline and the window, hooks them into
// the phases of the run, carries the commands that belong to no view, and holds back a quit
// while writes are still on their way to the files. Main thread only.
class AppDelegate : public SmartAppDelegate
{
    Q_OBJECT

public:
    // What the platform's quit request is answered.
    enum class TerminateReply { terminateCancel = 0, terminateNow = 1, terminateLater = 2 };

    explicit AppDelegate(QObject *parent = nullptr);
    ~AppDelegate() override;

    // The application's delegate; a fatal stop when there is none.
    static AppDelegate &shared();

    // Creates the parts and adds them to the launch and termination phases, in order.
    void finishInitialization();

    const QStringList additionalWhiteList;
    QPointer<QMainWindow> window;
    std::unique_ptr<MainWindow> mainWindow;
    std::unique_ptr<SparkleManagerHuskFacade> sparkleManagerFacade;
    std::unique_ptr<DataModel> dataModel;
    std::unique_ptr<CommonsHuskFacade> commonsHuskFacade;
    std::shared_ptr<OutputEngine> outputEngine;
    // What stands on the map; it lives as long as the session, longer than the map's view.
    std::unique_ptr<MapDelegate> mapDelegate;

    // The commands.
    void open();
    void showTroubleshooting();
    void filterInactive();
    void filterBySublocation();
    void filterByProvince();
    void filterByCountry();
    void filterByCity();
    void nextItemOrGroup();
    void previousItemOrGroup();
    void toggleInfoPane();
    void reload();
    void showFileTab();
    void showTextOutputTab();
    void showPreferences();

    // Files given to the program, by the command line or another start of it.
    void openFiles(const QStringList &paths);
    // The files of the command line wait until the window has been painted, so that the window
    // shows before the readers' workers start.
    void openFilesOnceWindowIsPainted(const QStringList &paths);

    // The quit: closing the window, the Quit command, the application's quit event and the
    // signals SIGTERM and SIGINT all come here. Ends the event loop once no write is pending.
    void terminate();
    bool applicationShouldTerminateAfterLastWindowClosed() const { return true; }
    // Answers at once without pending writes; otherwise flushes them, waits for them on another
    // thread and replies once they are written.
    TerminateReply applicationShouldTerminate();
    void replyToApplicationShouldTerminate(bool shouldTerminate);
    bool isWaitingForWrites() const { return m_waitingForWrites; }
    // True once the quit has been answered: the event loop ends.
    bool isTerminating() const { return m_terminating; }
    // The small window that tells how far the writes are while the quit waits.
    WritingProgressWindow *writingProgressWindow() const { return m_progressWindow; }

    // SIGTERM and SIGINT quit as the Quit command does. Call once, after the application object.
    void installSignalHandlers();

    // Where "Troubleshooting…" leads; empty when this build names no web site.
    QString troubleshootingURL() const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    MainWindow &requireMainWindow() const;
    DataModel &requireDataModel() const;
    void addHelpEntries();
    void saveInfoPane();

    bool m_waitingForWrites = false;
    bool m_terminating = false;
    QPointer<WritingProgressWindow> m_progressWindow;
};
