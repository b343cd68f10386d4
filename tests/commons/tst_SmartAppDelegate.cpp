#include "commons/SmartAppDelegate.h"

#include "TestSupport.h"

#include <QApplication>
#include <QTest>
#include <QTimer>
#include <QWidget>

// The delegate's phases run their callback lists in order of adding, at the Qt application's
// moments: the first turns of the event loop, state changes, and the end of the loop.
class tst_SmartAppDelegate : public QObject
{
    Q_OBJECT

private slots:
    void launchRunsTheListsInOrderOfAdding();
    void activationIsToldOnRealChangesOnly();
    void terminationRunsOnceWhenTheLoopEnds();
};

namespace {

// Adds a callback to the list that records its name and the phase it ran in.
void record(AppCallbackList &list, QStringList &log, const char *name)
{
    list.append([&log, name](SmartAppDelegate &, const AppNotification &notification) {
        log << QStringLiteral("%1@%2").arg(QLatin1String(name)).arg(int(notification.phase));
    });
}

QString entry(const char *name, AppNotification::Phase phase)
{
    return QStringLiteral("%1@%2").arg(QLatin1String(name)).arg(int(phase));
}

void sendState(Qt::ApplicationState state)
{
    QApplicationStateChangeEvent event(state);
    QCoreApplication::sendEvent(qApp, &event);
}

using Phase = AppNotification::Phase;

} // namespace

void tst_SmartAppDelegate::launchRunsTheListsInOrderOfAdding()
{
    SmartAppDelegate delegate(AppDescription {});
    QCOMPARE(&SmartAppDelegate::shared(), &delegate);
    QStringList log;
    record(delegate.didFinishLaunchingCallbackList, log, "did1");
    record(delegate.willFinishLaunchingCallbackList, log, "will1");
    // A part initialised during willFinishLaunching adds to the running list and to the next.
    delegate.willFinishLaunchingCallbackList.append(
        [&](SmartAppDelegate &d, const AppNotification &) {
            record(d.willFinishLaunchingCallbackList, log, "will3");
            record(d.didFinishLaunchingCallbackList, log, "did2");
            // Posted work runs between the two phases, as files opened at launch do.
            QTimer::singleShot(0, [&log] { log << QStringLiteral("posted"); });
        });
    record(delegate.willFinishLaunchingCallbackList, log, "will2");
    QVERIFY(log.isEmpty()); // nothing before the event loop turns

    QVERIFY(TestSupport::waitUntil([&] { return delegate.hasFinishedLaunching(); }));
    record(delegate.willFinishLaunchingCallbackList, log, "late"); // its phase has passed
    QTest::qWait(20);
    QCOMPARE(log,
             QStringList({entry("will1", Phase::willFinishLaunching),
                          entry("will2", Phase::willFinishLaunching),
                          entry("will3", Phase::willFinishLaunching), QStringLiteral("posted"),
                          entry("did1", Phase::didFinishLaunching),
                          entry("did2", Phase::didFinishLaunching)}));
}

void tst_SmartAppDelegate::activationIsToldOnRealChangesOnly()
{
    SmartAppDelegate delegate(AppDescription {});
    QStringList log;
    record(delegate.willBecomeActiveCallbackList, log, "willBecome");
    record(delegate.didBecomeActiveCallbackList, log, "didBecome");
    record(delegate.willResignActiveCallbackList, log, "willResign");
    record(delegate.didResignActiveCallbackList, log, "didResign");
    sendState(Qt::ApplicationActive); // before launch: not told
    QVERIFY(TestSupport::waitUntil([&] { return delegate.hasFinishedLaunching(); }));
    QVERIFY(log.isEmpty());

    // A window that the user activates makes the application active.
    QWidget window;
    window.show();
    window.activateWindow();
    QVERIFY(TestSupport::waitUntil([&] { return delegate.isActive(); }));
    sendState(Qt::ApplicationActive); // no change
    sendState(Qt::ApplicationInactive);
    sendState(Qt::ApplicationHidden); // still not active
    QCOMPARE(log,
             QStringList({entry("willBecome", Phase::willBecomeActive),
                          entry("didBecome", Phase::didBecomeActive),
                          entry("willResign", Phase::willResignActive),
                          entry("didResign", Phase::didResignActive)}));
}

void tst_SmartAppDelegate::terminationRunsOnceWhenTheLoopEnds()
{
    SmartAppDelegate delegate(AppDescription {});
    QStringList log;
    record(delegate.willTerminateCallbackList, log, "end1");
    record(delegate.willTerminateCallbackList, log, "end2");
    record(delegate.didFinishLaunchingCallbackList, log, "did");
    // The application's loop runs until something quits it, as in main(); a second run of the
    // loop (or a state change) after the end tells nothing.
    for (int run = 0; run < 2; ++run) {
        QTimer::singleShot(50, qApp, &QCoreApplication::quit);
        QCoreApplication::exec();
    }
    sendState(Qt::ApplicationActive);
    QCOMPARE(
        log,
        QStringList({entry("did", Phase::didFinishLaunching), entry("end1", Phase::willTerminate),
                     entry("end2", Phase::willTerminate)}));
}

QTEST_MAIN(tst_SmartAppDelegate)
#include "tst_SmartAppDelegate.moc"
