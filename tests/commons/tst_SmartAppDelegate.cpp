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
    void activationIsToldOnRealChangesAfterLaunch();
    void terminationRunsOnceWhenTheLoopEnds();
};

namespace {

using Phase = AppNotification::Phase;

// Adds a callback that records its name and phase.
void record(AppCallbackList &list, QStringList &log, const QString &name)
{
    list.append([&log, name](SmartAppDelegate &, const AppNotification &notification) {
        log << QStringLiteral("%1@%2").arg(name).arg(int(notification.phase));
    });
}

QString entry(const char *name, Phase phase)
{
    return QStringLiteral("%1@%2").arg(QLatin1String(name)).arg(int(phase));
}

void sendState(Qt::ApplicationState state)
{
    QApplicationStateChangeEvent event(state);
    QCoreApplication::sendEvent(qApp, &event);
}

} // namespace

void tst_SmartAppDelegate::launchRunsTheListsInOrderOfAdding()
{
    SmartAppDelegate delegate(AppDescription {});
    QCOMPARE(&SmartAppDelegate::shared(), &delegate);
    QStringList log;
    record(delegate.didFinishLaunchingCallbackList, log, QStringLiteral("did1"));
    record(delegate.willFinishLaunchingCallbackList, log, QStringLiteral("will1"));
    // A part initialised during willFinishLaunching adds to the running list and to the next.
    delegate.willFinishLaunchingCallbackList.append(
        [&](SmartAppDelegate &d, const AppNotification &) {
            log << QStringLiteral("init");
            record(d.willFinishLaunchingCallbackList, log, QStringLiteral("will3"));
            record(d.didFinishLaunchingCallbackList, log, QStringLiteral("did2"));
            // Posted work runs between the two launch phases, as files opened at launch do.
            QTimer::singleShot(0, [&log] { log << QStringLiteral("posted"); });
        });
    record(delegate.willFinishLaunchingCallbackList, log, QStringLiteral("will2"));
    QVERIFY(log.isEmpty()); // nothing before the event loop turns

    QVERIFY(TestSupport::waitUntil([&] { return delegate.hasFinishedLaunching(); }));
    QTest::qWait(20);
    const QStringList launch {entry("will1", Phase::willFinishLaunching),
                              QStringLiteral("init"),
                              entry("will2", Phase::willFinishLaunching),
                              entry("will3", Phase::willFinishLaunching),
                              QStringLiteral("posted"),
                              entry("did1", Phase::didFinishLaunching),
                              entry("did2", Phase::didFinishLaunching)};
    QCOMPARE(log.mid(0, launch.size()), launch);

    // A launch phase that has passed never runs again, not even for a late callback.
    log.clear();
    record(delegate.willFinishLaunchingCallbackList, log, QStringLiteral("late"));
    QTest::qWait(20);
    QVERIFY(!log.join(u',').contains(u"late"));
}

void tst_SmartAppDelegate::activationIsToldOnRealChangesAfterLaunch()
{
    SmartAppDelegate delegate(AppDescription {});
    QStringList log;
    record(delegate.willBecomeActiveCallbackList, log, QStringLiteral("willBecome"));
    record(delegate.didBecomeActiveCallbackList, log, QStringLiteral("didBecome"));
    record(delegate.willResignActiveCallbackList, log, QStringLiteral("willResign"));
    record(delegate.didResignActiveCallbackList, log, QStringLiteral("didResign"));
    record(delegate.didFinishLaunchingCallbackList, log, QStringLiteral("did"));
    sendState(Qt::ApplicationInactive);
    QVERIFY(TestSupport::waitUntil([&] { return delegate.hasFinishedLaunching(); }));
    log.clear();

    // A window that the user activates makes the application active.
    QWidget window;
    window.show();
    window.activateWindow();
    QVERIFY(TestSupport::waitUntil([&] { return delegate.isActive(); }));
    QCOMPARE(log,
             QStringList({entry("willBecome", Phase::willBecomeActive),
                          entry("didBecome", Phase::didBecomeActive)}));

    log.clear();
    sendState(Qt::ApplicationActive); // no change: nothing to tell
    sendState(Qt::ApplicationInactive);
    sendState(Qt::ApplicationHidden); // still not active
    QCOMPARE(log,
             QStringList({entry("willResign", Phase::willResignActive),
                          entry("didResign", Phase::didResignActive)}));
    QVERIFY(!delegate.isActive());
}

void tst_SmartAppDelegate::terminationRunsOnceWhenTheLoopEnds()
{
    auto delegate = std::make_unique<SmartAppDelegate>(AppDescription {});
    QStringList log;
    record(delegate->willTerminateCallbackList, log, QStringLiteral("end1"));
    record(delegate->willTerminateCallbackList, log, QStringLiteral("end2"));
    record(delegate->didFinishLaunchingCallbackList, log, QStringLiteral("did"));
    // The application's loop runs until something quits it, as in main().
    QTimer::singleShot(50, qApp, &QCoreApplication::quit);
    QCoreApplication::exec();
    QCOMPARE(
        log,
        QStringList({entry("did", Phase::didFinishLaunching), entry("end1", Phase::willTerminate),
                     entry("end2", Phase::willTerminate)}));

    log.clear();
    QTimer::singleShot(0, qApp, &QCoreApplication::quit);
    QCoreApplication::exec();
    sendState(Qt::ApplicationActive);
    QVERIFY(log.isEmpty());
}

QTEST_MAIN(tst_SmartAppDelegate)
#include "tst_SmartAppDelegate.moc"
