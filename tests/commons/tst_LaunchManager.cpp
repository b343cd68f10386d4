#include "commons/LaunchManager.h"
#include "commons/TestClock.h"
#include "platform/UserDefaults.h"

#include <QTemporaryDir>
#include <QTest>

// Launch counting and the five triggers, over a real preferences file, launch after launch.
class tst_LaunchManager : public QObject
{
    Q_OBJECT

private slots:
    void triggersFireAtTheirLaunches();
};

namespace {

constexpr double day = 86400.0;
const QString root = QStringLiteral("Launches");

// One run of the application: a fresh manager with the same launch list, launched once.
QStringList launchOnce(UserDefaults &defaults, const TestClock &clock)
{
    QStringList fired;
    LaunchManager manager(root, defaults, &clock);
    auto note = [&fired](const char *name) {
        return [&fired, name] {
            fired << QLatin1String(name);
        };
    };
    manager.add(LaunchTriggers::EveryTime {}, note("every"));
    manager.add(LaunchTriggers::AfterLaunches {3}, note("third"));
    manager.add(LaunchTriggers::FirstLaunch {}, note("first"));
    manager.add(LaunchTriggers::AfterDays {7}, note("week"));
    manager.add(LaunchTriggers::AfterLaunches {3}, note("third again"));
    manager.add(LaunchTriggers::UntilDefaultsKeyIsSet {QStringLiteral("welcomed")}, [&] {
        fired << QStringLiteral("welcome");
        if (manager.launchCount() == 2) // the user ticks "don't show again" the second time
            defaults.setObject(true, QStringLiteral("welcomed"));
    });
    manager.launch();
    manager.launch(); // counted once per run
    return fired;
}

} // namespace

void tst_LaunchManager::triggersFireAtTheirLaunches()
{
    QTemporaryDir dir;
    UserDefaults defaults(dir.filePath(QStringLiteral("preferences.json")));
    // Damaged bookkeeping counts as absent.
    defaults.setObject(QStringLiteral("many"), root + QStringLiteral(".launchCount"));
    defaults.setObject(42, root + QStringLiteral(".firstLaunchDate"));
    TestClock clock(700'000'000.0);
    const QDateTime firstDate = clock.currentDate();

    // Day of each launch, and what fires then, in order of adding.
    const QList<std::pair<double, QStringList>> launches {
        {0, {"every", "first", "welcome"}},
        {0.5, {"every", "welcome"}},
        {1, {"every", "third", "third again"}},
        {6.9, {"every"}},
        {7, {"every", "week"}},
        {30, {"every"}},
    };
    for (const auto &[days, expected] : launches) {
        clock.setCurrentTimeIntervalSinceReferenceDate(700'000'000.0 + days * day);
        QCOMPARE(launchOnce(defaults, clock), expected);
    }
    LaunchManager manager(root, defaults, &clock);
    QCOMPARE(manager.launchCount(), 6);
    QCOMPARE(manager.firstLaunchDate(), firstDate);

    // The bookkeeping outlives the process: a new store on the same file reads it back.
    defaults.synchronize();
    UserDefaults reopened(dir.filePath(QStringLiteral("preferences.json")));
    QCOMPARE(LaunchManager(root, reopened, &clock).launchCount(), 6);
}

QTEST_GUILESS_MAIN(tst_LaunchManager)
#include "tst_LaunchManager.moc"
