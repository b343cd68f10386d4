#pragma once

#include "AppCallbackList.h"
#include "AppDescription.h"
#include "MenuItemManager.h"

#include <QObject>

// The base of the application's delegate: its start, activation and end are lists of callbacks
// that the application's parts add to. The phases follow the Qt application:
//   willFinishLaunching  the first turn of the event loop (queued by the constructor)
//   didFinishLaunching   the next turn, so that what willFinishLaunching posted runs in between
//   will/didBecomeActive the application state turning Qt::ApplicationActive
//   will/didResignActive the state leaving Qt::ApplicationActive
//   willTerminate        QCoreApplication::aboutToQuit
// Qt reports a state change once it has happened, so each will/did pair runs back to back.
// Activation is told only between didFinishLaunching and willTerminate, and only on a real
// change; an application already active at launch is told right after didFinishLaunching.
// Each phase of launch and end runs once. Main thread only.
class SmartAppDelegate : public QObject
{
    Q_OBJECT

public:
    // Needs the QGuiApplication (or QApplication) object; stops the program without one.
    explicit SmartAppDelegate(AppDescription appDescription, QObject *parent = nullptr);
    ~SmartAppDelegate() override;

    // The application's delegate: the most recently made one that still exists. Stops the
    // program when there is none.
    static SmartAppDelegate &shared();

    bool hasFinishedLaunching() const { return m_stage >= Stage::launched; }
    bool isActive() const { return m_active; }

    MenuItemManager menuItemManager;
    AppDescription appDescription;
    AppCallbackList willFinishLaunchingCallbackList;
    AppCallbackList didFinishLaunchingCallbackList;
    AppCallbackList willBecomeActiveCallbackList;
    AppCallbackList didBecomeActiveCallbackList;
    AppCallbackList willResignActiveCallbackList;
    AppCallbackList didResignActiveCallbackList;
    AppCallbackList willTerminateCallbackList;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    enum class Stage { created, finishingLaunch, launched, terminated };

    void applicationWillFinishLaunching();
    void applicationDidFinishLaunching();
    void applicationStateChanged(Qt::ApplicationState state);
    void applicationWillTerminate();
    void run(const AppCallbackList &list, AppNotification::Phase phase, Qt::ApplicationState state);

    Stage m_stage = Stage::created;
    bool m_active = false;
};
