#include "platform/OperationQueue.h"
#include "platform/SerialQueue.h"

#include <QTest>

#include <atomic>
#include <mutex>
#include <vector>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {
// Blocks its worker until released, so that the queue's waiting list can be inspected.
class GateOperation : public Operation
{
public:
    void main() override
    {
        std::unique_lock lock(mutex);
        started = true;
        startedChanged.notify_all();
        released.wait(lock, [&] { return open; });
    }
    void waitStarted()
    {
        std::unique_lock lock(mutex);
        startedChanged.wait(lock, [&] { return started; });
    }
    void release()
    {
        std::lock_guard lock(mutex);
        open = true;
        released.notify_all();
    }

private:
    std::mutex mutex;
    std::condition_variable released, startedChanged;
    bool open = false;
    bool started = false;
};

class RecordingOperation : public Operation
{
public:
    RecordingOperation(std::vector<int> &log, std::mutex &mutex, int id)
        : log(log)
        , mutex(mutex)
        , id(id)
    { }
    void main() override
    {
        std::lock_guard lock(mutex);
        log.push_back(id);
    }
    std::vector<int> &log;
    std::mutex &mutex;
    int id;
};
} // namespace

class tst_OperationQueue : public QObject
{
    Q_OBJECT

private slots:
    void priorityThenFifoOrder();
    void operationsListsRunningFirstThenWaiting();
    void cancelAllSkipsWaitingAndFlagsRunning();
    void widthLimitsConcurrency();
    void addOperationsQueuesLikeSingleAdds();
    void workersRunAtTheirClassNiceness_data();
    void workersRunAtTheirClassNiceness();
};

void tst_OperationQueue::priorityThenFifoOrder()
{
    OperationQueue queue(QStringLiteral("test"), 1, QualityOfService::UserInitiated);
    QCOMPARE(queue.qualityOfService(), QualityOfService::UserInitiated);
    auto gate = std::make_shared<GateOperation>();
    queue.addOperation(gate);
    gate->waitStarted();

    std::vector<int> log;
    std::mutex mutex;
    const int priorities[]
        = {Operation::Normal, Operation::High, Operation::Normal, Operation::High, Operation::Low};
    for (int i = 0; i < 5; ++i) {
        auto op = std::make_shared<RecordingOperation>(log, mutex, i);
        op->setQueuePriority(priorities[i]);
        queue.addOperation(op);
    }
    gate->release();
    queue.waitUntilAllOperationsAreFinished();
    QCOMPARE(log, (std::vector<int> {1, 3, 0, 2, 4}));
    QCOMPARE(queue.operationCount(), 0);
}

void tst_OperationQueue::operationsListsRunningFirstThenWaiting()
{
    OperationQueue queue(QStringLiteral("test"), 1);
    auto gate = std::make_shared<GateOperation>();
    auto waiting = std::make_shared<BlockOperation>([] {});
    queue.addOperation(gate);
    gate->waitStarted();
    queue.addOperation(waiting);
    const QList<OperationPtr> listed = queue.operations();
    QCOMPARE(listed.size(), 2);
    QCOMPARE(listed.first(), OperationPtr(gate));
    QVERIFY(listed.first()->isExecuting());
    QCOMPARE(listed.last(), OperationPtr(waiting));
    gate->release();
    queue.waitUntilAllOperationsAreFinished();
    QVERIFY(waiting->isFinished());
}

void tst_OperationQueue::cancelAllSkipsWaitingAndFlagsRunning()
{
    OperationQueue queue(QStringLiteral("test"), 1);
    auto gate = std::make_shared<GateOperation>();
    std::atomic_bool waitingRan = false;
    auto waiting = std::make_shared<BlockOperation>([&] { waitingRan = true; });
    queue.addOperation(gate);
    gate->waitStarted();
    queue.addOperation(waiting);
    queue.cancelAllOperations();
    QVERIFY(gate->isCancelled());
    gate->release();
    queue.waitUntilAllOperationsAreFinished();
    QVERIFY(!waitingRan);
    QVERIFY(waiting->isFinished());

    // Operations added after the cancellation run normally.
    std::atomic_bool laterRan = false;
    queue.addOperation([&] { laterRan = true; });
    queue.waitUntilAllOperationsAreFinished();
    QVERIFY(laterRan);
}

void tst_OperationQueue::widthLimitsConcurrency()
{
    OperationQueue queue(QStringLiteral("test"), 3);
    std::atomic_int inside = 0, peak = 0;
    for (int i = 0; i < 30; ++i) {
        queue.addOperation([&] {
            const int now = ++inside;
            int expected = peak.load();
            while (now > expected && !peak.compare_exchange_weak(expected, now)) { }
            QTest::qSleep(5);
            --inside;
        });
    }
    queue.waitUntilAllOperationsAreFinished();
    QVERIFY(peak.load() <= 3);
    QVERIFY(peak.load() >= 2);
}

void tst_OperationQueue::addOperationsQueuesLikeSingleAdds()
{
    OperationQueue queue(QStringLiteral("test"), 1);
    std::vector<int> log;
    std::mutex mutex;
    const auto batch = [&](std::initializer_list<std::pair<int, int>> idsAndPriorities) {
        QList<OperationPtr> operations;
        for (const auto &[id, priority] : idsAndPriorities) {
            auto op = std::make_shared<RecordingOperation>(log, mutex, id);
            op->setQueuePriority(priority);
            operations << op;
        }
        return operations;
    };
    // On an idle queue the batch starts a worker by itself.
    queue.addOperations(batch({{0, Operation::Normal}}));
    queue.waitUntilAllOperationsAreFinished();
    QCOMPARE(log, std::vector<int> {0});

    auto gate = std::make_shared<GateOperation>();
    queue.addOperation(gate);
    gate->waitStarted();
    log.clear();
    queue.addOperations(batch({{1, Operation::Normal}, {2, Operation::High}}));
    queue.addOperations({});
    queue.addOperations(batch({{3, Operation::Normal}, {4, Operation::High}, {5, Operation::Low}}));
    QCOMPARE(queue.operationCount(), 6);
    gate->release();
    queue.waitUntilAllOperationsAreFinished();
    QCOMPARE(log, (std::vector<int> {2, 4, 1, 3, 5}));
}

namespace {

int currentThreadNiceness()
{
    return getpriority(PRIO_PROCESS, pid_t(syscall(SYS_gettid)));
}

// Runs the block on a fresh thread of the queue and answers its niceness there.
int nicenessOnQueue(OperationQueue &queue)
{
    std::atomic_int niceness = -100;
    queue.addOperation([&] { niceness = currentThreadNiceness(); });
    queue.waitUntilAllOperationsAreFinished();
    return niceness;
}

} // namespace

void tst_OperationQueue::workersRunAtTheirClassNiceness_data()
{
    QTest::addColumn<QualityOfService>("quality");
    QTest::addColumn<int>("offset");
    QTest::newRow("interactive") << QualityOfService::UserInteractive << 0;
    QTest::newRow("initiated") << QualityOfService::UserInitiated << 1;
    QTest::newRow("default") << QualityOfService::Default << 2;
    QTest::newRow("utility") << QualityOfService::Utility << 5;
    QTest::newRow("background") << QualityOfService::Background << 10;
}

void tst_OperationQueue::workersRunAtTheirClassNiceness()
{
    QFETCH(QualityOfService, quality);
    QFETCH(int, offset);
    const int base = currentThreadNiceness();
    OperationQueue queue(QStringLiteral("quality"), 1, quality);
    QCOMPARE(nicenessOnQueue(queue), std::min(19, base + offset));

    // A worker started from a nicer queue's thread, and a serial queue made there, do not
    // inherit that thread's niceness.
    OperationQueue background(QStringLiteral("background"), 1, QualityOfService::Background);
    int nested = -100;
    int serial = -100;
    background.addOperation([&] {
        nested = nicenessOnQueue(queue);
        SerialQueue serialQueue(QStringLiteral("made in the background"));
        serialQueue.async([&] { serial = currentThreadNiceness(); });
    });
    // The serial queue's end waits for its block.
    background.waitUntilAllOperationsAreFinished();
    QCOMPARE(nested, std::min(19, base + offset));
    QCOMPARE(serial, base);
}

QTEST_GUILESS_MAIN(tst_OperationQueue)
#include "tst_OperationQueue.moc"
