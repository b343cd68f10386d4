#include "commons/SmartTimerWrapper.h"
#include "commons/TestClock.h"

#include <QTest>

// Timers tick through their wrapper on the system clock and, in tests, on a TestClock.
class tst_SmartTimerWrapper : public QObject
{
    Q_OBJECT

private slots:
    void testClockTicksEachTimerAtItsMoment();
    void systemClockTicksThroughQTimer();
};

using Repeats = SmartTimerWrapper::Repeats;

void tst_SmartTimerWrapper::testClockTicksEachTimerAtItsMoment()
{
    TestClock clock(1000.0);
    Clock::setCurrent(&clock);
    QList<std::pair<QString, double>> ticks;
    auto note = [&](const char *name) {
        return [&ticks, &clock, name](SmartTimerWrapper &) {
            ticks.append({QLatin1String(name), clock.currentTimeIntervalSinceReferenceDate()});
        };
    };
    const auto every10 = SmartTimerWrapper::wrapTimer(10, Repeats::Yes, note("every10"));
    const auto once25 = SmartTimerWrapper::wrapTimer(25, Repeats::No, note("once25"));
    auto dropped = SmartTimerWrapper::wrapTimer(5, Repeats::Yes, note("dropped"));
    dropped.reset();
    // A one-shot timer is spent when its block runs, so the block may start the next one.
    std::shared_ptr<SmartTimerWrapper> rearmed;
    const auto chain = SmartTimerWrapper::wrapTimer(15, Repeats::No, [&](SmartTimerWrapper &t) {
        QVERIFY(!t.isValid());
        note("chain")(t);
        rearmed = SmartTimerWrapper::wrapTimer(20, Repeats::No, note("rearmed"));
    });

    clock.advance(36);
    const QList<std::pair<QString, double>> expected {{"every10", 1010}, {"chain", 1015},
                                                      {"every10", 1020}, {"once25", 1025},
                                                      {"every10", 1030}, {"rearmed", 1035}};
    QCOMPARE(ticks, expected);
    QCOMPARE(clock.currentTimeIntervalSinceReferenceDate(), 1036.0);
    QCOMPARE(clock.pendingTimerCount(), 1); // only the repeating one is left
    every10->invalidate();
    clock.advance(100);
    QCOMPARE(ticks.size(), expected.size());
    Clock::setCurrent(nullptr);
}

void tst_SmartTimerWrapper::systemClockTicksThroughQTimer()
{
    int ticks = 0;
    std::shared_ptr<SmartTimerWrapper> timer
        = SmartTimerWrapper::wrapTimer(0.01, Repeats::Yes, [&](SmartTimerWrapper &) {
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
