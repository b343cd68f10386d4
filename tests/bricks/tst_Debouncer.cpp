#include "bricks/Debouncer.h"
#include "bricks/EndOfLifeBag.h"

#include "TestSupport.h"

#include <QTest>

class tst_Debouncer : public QObject
{
    Q_OBJECT

private slots:
    void burstRunsOnlyTheLastAction();
    void endOfLifeBagRunsClosuresInOrder();
};

void tst_Debouncer::burstRunsOnlyTheLastAction()
{
    Debouncer debouncer(0.05);
    QList<int> ran;
    for (int i = 0; i < 10; ++i)
        debouncer.run([&ran, i] { ran << i; });
    QTest::qWait(20);
    QVERIFY(ran.isEmpty());
    QVERIFY(TestSupport::waitUntil([&] { return !ran.isEmpty(); }));
    QTest::qWait(80);
    QCOMPARE(ran, QList<int> {9});

    debouncer.run([&ran] { ran << 10; }); // after the action ran, a new one is scheduled
    QVERIFY(TestSupport::waitUntil([&] { return ran.size() == 2; }));
    QCOMPARE(ran.last(), 10);
}

void tst_Debouncer::endOfLifeBagRunsClosuresInOrder()
{
    QList<int> ran;
    {
        EndOfLifeBag empty; // never got a closure: does nothing
        EndOfLifeBag bag;
        bag.add([&] { ran << 1; });
        bag.add([&] { ran << 2; });
        QVERIFY(ran.isEmpty());
    }
    QCOMPARE(ran, (QList<int> {1, 2}));
}

QTEST_GUILESS_MAIN(tst_Debouncer)
#include "tst_Debouncer.moc"
