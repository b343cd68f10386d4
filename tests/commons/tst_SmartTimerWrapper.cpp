#include "commons/SmartTimerWrapper.h"
#include "commons/TestClock.h"

#include <QTest>

// Timers tick through their wrapper on the system clock and, in tests, on a TestClock.
class tst_SmartTimerWrapper : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { Clock::setCurrent(nullptr); }
    void testClockTicksEachTimerAtItsMoment();
    void aTimerStopsWhenInvalidatedOrDropped();
    void systemClockTicksThroughQTimer();
};

void tst_SmartTimerWrapper::testClockTicksEachTimerAtItsMoment()
{
    TestClock clock(1000.0);
    Clock::setCurrent(&clock);
    QList<std::pair<QString, double>> ticks;
    auto note = [&](const char *name) {
        return [&ticks, name](SmartTimerWrapper &) {
            ticks.append(
                {QLatin1String(name), Clock::current().currentTimeIntervalSinceReferenceDate()});
        };
    };
    const auto every10
        = SmartTimerWrapper::wrapTimer(10, SmartTimerWrapper::Repeats::Yes, note("every10"));
    const auto once25
        = SmartTimerWrapper::wrapTimer(25, SmartTimerWrapper::Repeats::No, note("once25"));
    // A one-shot timer is spent when its block runs, so the block may start the next one.
    std::shared_ptr<SmartTimerWrapper> rearmed;
    const auto chain = SmartTimerWrapper::wrapTimer(
        15, SmartTimerWrapper::Repeats::No, [&](SmartTimerWrapper &timer) {
            QVERIFY(!timer.isValid());
            ticks.append({QStringLiteral("chain"), clock.currentTimeIntervalSinceReferenceDate()});
            rearmed
                = SmartTimerWrapper::wrapTimer(20, SmartTimerWrapper::Repeats::No, note("rearmed"));
        });

    clock.advance(36);
    const QList<std::pair<QString, double>> expected {{"every10", 1010}, {"chain", 1015},
                                                      {"every10", 1020}, {"once25", 1025},
                                                      {"every10", 1030}, {"rearmed", 1035}};
    QCOMPARE(ticks, expected);
    QCOMPARE(clock.currentTimeIntervalSinceReferenceDate(), 1036.0);
    QCOMPARE(clock.pendingTimerCount(), 1); // only the repeating one is left
    QVERIFY(!once25->isValid());
}

void tst_SmartTimerWrapper::aTimerStopsWhenInvalidatedOrDropped()
{
    TestClock clock;
    Clock::setCurrent(&clock);
    int ticks = 0;
    auto timer = SmartTimerWrapper::wrapTimer(1, SmartTimerWrapper::Repeats::Yes,
                                              [&](SmartTimerWrapper &t) {
                                                  if (++ticks == 2)
                                                      t.invalidate(); // from inside its own tick
                                              });
    clock.advance(5);
    QCOMPARE(ticks, 2);

    auto dropped = SmartTimerWrapper::wrapTimer(1, SmartTimerWrapper::Repeats::Yes,
                                                [&](SmartTimerWrapper &) { ++ticks; });
    dropped.reset();
    clock.advance(5);
    QCOMPARE(ticks, 2);
    QCOMPARE(clock.pendingTimerCount(), 0);
}

void tst_SmartTimerWrapper::systemClockTicksThroughQTimer()
{
    int ticks = 0;
    std::shared_ptr<SmartTimerWrapper> timer = SmartTimerWrapper::wrapTimer(
        0.01, SmartTimerWrapper::Repeats::Yes, [&](SmartTimerWrapper &) {
            if (++ticks == 3)
                timer.reset(); // the last owner lets go inside the tick
        });
    QVERIFY(timer->timer);
    QTRY_COMPARE(ticks, 3);
    QTest::qWait(50);
    QCOMPARE(ticks, 3);
}

QTEST_GUILESS_MAIN(tst_SmartTimerWrapper)
#include "tst_SmartTimerWrapper.moc"
