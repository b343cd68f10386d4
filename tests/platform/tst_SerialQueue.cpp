#include "platform/SerialQueue.h"

#include <QTest>

#include <atomic>
#include <thread>
#include <vector>

class tst_SerialQueue : public QObject
{
    Q_OBJECT

private slots:
    void asyncBlocksRunInOrderOneAtATime();
    void syncWaitsForEarlierBlocksAndExcludesOthers();
    void syncFromManyThreadsIsMutuallyExclusive();
};

void tst_SerialQueue::asyncBlocksRunInOrderOneAtATime()
{
    SerialQueue queue(QStringLiteral("test"));
    std::vector<int> order;
    std::atomic_int inside = 0;
    bool overlapped = false;
    for (int i = 0; i < 200; ++i) {
        queue.async([&, i] {
            if (++inside > 1)
                overlapped = true;
            order.push_back(i);
            --inside;
        });
    }
    queue.sync([] {});
    QCOMPARE(order.size(), size_t(200));
    for (int i = 0; i < 200; ++i)
        QCOMPARE(order[size_t(i)], i);
    QVERIFY(!overlapped);
}

void tst_SerialQueue::syncWaitsForEarlierBlocksAndExcludesOthers()
{
    SerialQueue queue(QStringLiteral("test"));
    std::atomic_bool slowDone = false;
    queue.async([&] {
        QTest::qSleep(50);
        slowDone = true;
    });
    bool sawSlowDone = false;
    bool ranOnCaller = false;
    const auto caller = std::this_thread::get_id();
    queue.sync([&] {
        sawSlowDone = slowDone;
        ranOnCaller = std::this_thread::get_id() == caller;
        QVERIFY(queue.isCurrent());
    });
    QVERIFY(sawSlowDone);
    QVERIFY(ranOnCaller);
    QVERIFY(!queue.isCurrent());

    // A block queued after a sync block waits for it.
    int value = 0;
    queue.async([&] { value = 1; });
    queue.sync([&] { value = value == 1 ? 2 : -1; });
    QCOMPARE(value, 2);
}

void tst_SerialQueue::syncFromManyThreadsIsMutuallyExclusive()
{
    SerialQueue queue(QStringLiteral("test"));
    long long counter = 0; // deliberately unguarded: the queue is the guard
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 20000; ++i) {
                if (i % 3 == 0)
                    queue.async([&] { ++counter; });
                else
                    queue.sync([&] { ++counter; });
            }
        });
    }
    for (auto &thread : threads)
        thread.join();
    long long final = 0;
    queue.sync([&] { final = counter; });
    QCOMPARE(final, 80000LL);
}

QTEST_GUILESS_MAIN(tst_SerialQueue)
#include "tst_SerialQueue.moc"
