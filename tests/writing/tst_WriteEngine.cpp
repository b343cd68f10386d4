#include "TestSupport.h"
#include "WriteFixtures.h"
#include "WriteTestDoubles.h"

#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"
#include "platform/AlertPresenter.h"
#include "platform/ChildProcess.h"
#include "platform/ClipboardWriter.h"
#include "session/Node.h"
#include "writing/FileOperationLock.h"
#include "writing/WriteEngine.h"
#include "writing/WriteWorker.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <thread>

using namespace Qt::StringLiterals;
using namespace WriteTestDoubles;

namespace {

// What a handler saw: the file, the result and the size of the batch that carried it.
struct Outcome
{
    QString name;
    bool success = false;
    int batchSize = 0;
    bool operator==(const Outcome &) const = default;
};

using Outcomes = std::shared_ptr<QList<Outcome>>;

QString iptc(const QString &path, const QString &tag)
{
    return WriteFixtures::numericValues(path).value(u"IPTC:"_s + tag).toString();
}

// A plain "Country" is the IPTC field that the read answers as "Country".
QString country(const QString &path)
{
    return iptc(path, u"Country-PrimaryLocationName"_s);
}

} // namespace

class tst_WriteEngine : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void merge_data();
    void merge();
    void consolidatesInFirstArrivalOrder();
    void debounceRestartsWithEachEdit();
    void blockedFileWaitsAndJoinsLaterEdits();
    void failuresGiveOneAlert_data();
    void failuresGiveOneAlert();
    void viewModelFollowsTheBatch();
    void waitForCompletionWritesEverything();
    void flushImmediatelyFromBackgroundThread();
    void writeWorkerIsKeptWhileWritesCome();

private:
    QString copyOfJpeg(const QString &name);
    void enqueue(const QString &path, const QStringList &pairs, const Outcomes &outcomes);

    QString m_jpeg;
    QTemporaryDir m_directory;
    RecordingPresenter m_presenter;
    RecordingClipboard m_clipboard;
    std::shared_ptr<int> m_completions = std::make_shared<int>(0);
};

void tst_WriteEngine::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    QVERIFY(m_directory.isValid());
    m_jpeg = m_directory.filePath(u"fixture.jpg"_s);
    const QString made = WriteFixtures::makeFixture(m_jpeg);
    QVERIFY2(made.isEmpty(), qPrintable(made));
    AlertPresenter::install(&m_presenter);
    ClipboardWriter::install(&m_clipboard);
    std::shared_ptr<int> completions = m_completions;
    WriteEngine::shared().writeCompletePublisher().addColdListener([completions](bool done) {
        if (done)
            ++*completions;
    });
}

void tst_WriteEngine::cleanupTestCase()
{
    AlertPresenter::install(nullptr);
    ClipboardWriter::install(nullptr);
}

void tst_WriteEngine::init()
{
    m_presenter.alerts.clear();
    m_presenter.answers.clear();
    m_clipboard.texts.clear();
}

void tst_WriteEngine::cleanup()
{
    QVERIFY(TestSupport::waitForWrites());
}

QString tst_WriteEngine::copyOfJpeg(const QString &name)
{
    return freshCopy(m_jpeg, m_directory.filePath(name));
}

void tst_WriteEngine::enqueue(const QString &path, const QStringList &pairs,
                              const Outcomes &outcomes)
{
    const QString name = QFileInfo(path).fileName();
    WriteEngine::shared().enqueueWrite(
        {path, pairs, FileNode::create(name, path, name), [outcomes, name](bool success) {
             outcomes->append(
                 {name, success, WriteEngine::shared().createViewModel().totalFileCount});
         }});
}

void tst_WriteEngine::merge_data()
{
    QTest::addColumn<QList<QStringList>>("edits");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("last value wins in place")
        << QList<QStringList> {{u"City"_s, u"Rome"_s},
                               {u"Country"_s, u"Italy"_s},
                               {u"City"_s, u"Milan"_s}}
        << QStringList {u"City"_s, u"Milan"_s, u"Country"_s, u"Italy"_s};
    QTest::newRow("repeats within the first edit stay")
        << QList<QStringList> {{u"City"_s, u"Rome"_s, u"City"_s, u"Milan"_s}}
        << QStringList {u"City"_s, u"Rome"_s, u"City"_s, u"Milan"_s};
    QTest::newRow("later edit replaces the first occurrence")
        << QList<QStringList> {{u"City"_s, u"Rome"_s, u"City"_s, u"Milan"_s},
                               {u"City"_s, u"Turin"_s}}
        << QStringList {u"City"_s, u"Turin"_s, u"City"_s, u"Milan"_s};
    QTest::newRow("a value equal to a tag is not a tag")
        << QList<QStringList> {{u"Sub-location"_s, u"City"_s}, {u"City"_s, u"Bari"_s}}
        << QStringList {u"Sub-location"_s, u"City"_s, u"City"_s, u"Bari"_s};
    QTest::newRow("tags compare exactly")
        << QList<QStringList> {{u"City"_s, u"Rome"_s}, {u"city"_s, u"Bari"_s}}
        << QStringList {u"City"_s, u"Rome"_s, u"city"_s, u"Bari"_s};
    QTest::newRow("new tags append in order")
        << QList<QStringList> {{u"GPSLatitude#"_s, u"+41.9"_s},
                               {u"City"_s, u"Rome"_s, u"GPSLatitude#"_s, u"+42.0"_s}}
        << QStringList {u"GPSLatitude#"_s, u"+42.0"_s, u"City"_s, u"Rome"_s};
}

void tst_WriteEngine::merge()
{
    QFETCH(QList<QStringList>, edits);
    QFETCH(QStringList, expected);
    auto calls = std::make_shared<QList<int>>();
    QList<PendingWrite> writes;
    for (int i = 0; i < edits.size(); ++i) {
        std::function<void(bool)> handler;
        // Every second edit has no handler, which must leave no gap in the list.
        if (i % 2 == 0)
            handler = [calls, i](bool) {
                calls->append(i);
            };
        writes.append({u"/a.jpg"_s, edits.at(i), nullptr, handler});
    }
    ConsolidatedWrite consolidated = ConsolidatedWrite::fromPendingWrite(writes.first());
    for (qsizetype i = 1; i < writes.size(); ++i)
        consolidated.merge(writes.at(i));
    QCOMPARE(consolidated.allTagValuePairs, expected);
    for (const auto &handler : consolidated.completionHandlers)
        handler(true);
    QList<int> expectedCalls;
    for (int i = 0; i < edits.size(); i += 2)
        expectedCalls.append(i);
    QCOMPARE(*calls, expectedCalls);
}

// Edits of one round reach each file in one write, files in the order of their first edit.
void tst_WriteEngine::consolidatesInFirstArrivalOrder()
{
    const QString a = copyOfJpeg(u"a.jpg"_s);
    const QString b = copyOfJpeg(u"b.jpg"_s);
    const QString c = copyOfJpeg(u"c.jpg"_s);
    auto outcomes = std::make_shared<QList<Outcome>>();
    const int completionsBefore = *m_completions;

    enqueue(a, {u"City"_s, u"Paris"_s}, outcomes);
    enqueue(b, {u"City"_s, u"Rome"_s}, outcomes);
    enqueue(a, {u"Country"_s, u"France"_s}, outcomes);
    enqueue(c, {u"City"_s, u"Oslo"_s}, outcomes);
    enqueue(a, {u"City"_s, u"Lyon"_s}, outcomes);
    QVERIFY(TestSupport::waitUntil([&] { return outcomes->size() == 5; }, 30000));
    QVERIFY(TestSupport::waitForWrites());

    const QList<Outcome> expected = {{u"a.jpg"_s, true, 3},
                                     {u"a.jpg"_s, true, 3},
                                     {u"a.jpg"_s, true, 3},
                                     {u"b.jpg"_s, true, 3},
                                     {u"c.jpg"_s, true, 3}};
    QCOMPARE(*outcomes, expected);
    QCOMPARE(iptc(a, u"City"_s), u"Lyon"_s);
    QCOMPARE(country(a), u"France"_s);
    QCOMPARE(iptc(b, u"City"_s), u"Rome"_s);
    QCOMPARE(iptc(c, u"City"_s), u"Oslo"_s);
    // Without failures the batch still announces its end, once, and shows nothing.
    QCOMPARE(*m_completions, completionsBefore + 1);
    QVERIFY(m_presenter.alerts.isEmpty());
}

// A second edit within the delay pushes the flush to 0.3 s after it.
void tst_WriteEngine::debounceRestartsWithEachEdit()
{
    const QString a = copyOfJpeg(u"debounce.jpg"_s);
    auto outcomes = std::make_shared<QList<Outcome>>();
    // A timer left from an earlier round fires on an empty list; let it pass first.
    QTest::qWait(400);
    QElapsedTimer clock;
    clock.start();
    enqueue(a, {u"City"_s, u"Bergen"_s}, outcomes);
    QTest::qWait(200);
    const qint64 secondEdit = clock.elapsed();
    enqueue(a, {u"City"_s, u"Tromsø"_s}, outcomes);
    qint64 started = -1;
    QVERIFY(TestSupport::waitUntil(
        [&] {
            if (started < 0 && WriteEngine::shared().createViewModel().isActive)
                started = clock.elapsed();
            return outcomes->size() == 2;
        },
        30000));
    QVERIFY(started >= 0);
    QVERIFY2(started - secondEdit >= 300,
             qPrintable(u"started %1 ms after the second edit"_s.arg(started - secondEdit)));
    QCOMPARE(*outcomes,
             (QList<Outcome> {{u"debounce.jpg"_s, true, 1}, {u"debounce.jpg"_s, true, 1}}));
    QCOMPARE(iptc(a, u"City"_s), u"Tromsø"_s);
}

// A file being re-read is held back while the rest of its batch runs; an edit that comes
// meanwhile joins its waiting write, and the file is written once the read is over.
void tst_WriteEngine::blockedFileWaitsAndJoinsLaterEdits()
{
    const QString held = copyOfJpeg(u"held.jpg"_s);
    const QString free = copyOfJpeg(u"free.jpg"_s);
    const QByteArray heldBefore = WriteFixtures::fileHash(held);
    auto outcomes = std::make_shared<QList<Outcome>>();

    FileOperationLock::shared().beginMetadataRetrieval(held);
    enqueue(held, {u"City"_s, u"Bern"_s}, outcomes);
    enqueue(free, {u"City"_s, u"Graz"_s}, outcomes);
    WriteEngine::shared().flushImmediately();
    QVERIFY(TestSupport::waitUntil([&] { return outcomes->size() == 1; }, 30000));
    QCOMPARE(outcomes->first(), (Outcome {u"free.jpg"_s, true, 1}));
    QVERIFY(WriteEngine::shared().hasPendingWrites());

    enqueue(held, {u"Country"_s, u"Schweiz"_s}, outcomes);
    // Several retries pass while the read goes on.
    QTest::qWait(450);
    QCOMPARE(outcomes->size(), 1);
    QCOMPARE(WriteFixtures::fileHash(held), heldBefore);
    QVERIFY(WriteEngine::shared().hasPendingWrites());

    FileOperationLock::shared().endMetadataRetrieval(held);
    QVERIFY(TestSupport::waitUntil([&] { return outcomes->size() == 3; }, 30000));
    QCOMPARE(outcomes->mid(1),
             (QList<Outcome> {{u"held.jpg"_s, true, 1}, {u"held.jpg"_s, true, 1}}));
    QCOMPARE(iptc(held, u"City"_s), u"Bern"_s);
    QCOMPARE(country(held), u"Schweiz"_s);
    QVERIFY(TestSupport::waitForWrites());
}

void tst_WriteEngine::failuresGiveOneAlert_data()
{
    QTest::addColumn<int>("failureCount");
    QTest::newRow("one") << 1;
    QTest::newRow("as many as the list shows") << 20;
    QTest::newRow("one more than the list shows") << 21;
}

// Failures mixed with successes: the successes are written and re-read, and the failures come
// to the user in one alert, with the details and the clipboard text on request.
void tst_WriteEngine::failuresGiveOneAlert()
{
    QFETCH(int, failureCount);
    const QString first = copyOfJpeg(u"good-first.jpg"_s);
    const QString last = copyOfJpeg(u"good-last.jpg"_s);
    QStringList folders;
    for (int i = 1; i <= failureCount; ++i) {
        folders << m_directory.filePath(u"folder-%1.jpg"_s.arg(i, 2, 10, QChar(u'0')));
        QVERIFY(QDir().mkpath(folders.last()));
    }
    auto outcomes = std::make_shared<QList<Outcome>>();
    m_presenter.answers = {1, 1};
    for (const QString &path : QStringList {first} + folders + QStringList {last})
        enqueue(path, {u"City"_s, u"Gent"_s}, outcomes);
    QVERIFY(TestSupport::waitUntil([&] { return outcomes->size() == failureCount + 2; }, 30000));
    QVERIFY(TestSupport::waitUntil([&] { return !m_presenter.alerts.isEmpty(); }));
    QVERIFY(TestSupport::waitForWrites());

    QCOMPARE(iptc(first, u"City"_s), u"Gent"_s);
    QCOMPARE(iptc(last, u"City"_s), u"Gent"_s);
    QCOMPARE(MetadataStorage::shared().getObjCIntegerValue(last, u"size"_s, MetadataSource::Basic),
             QFileInfo(last).size());
    QCOMPARE(outcomes->first().success, true);
    QCOMPARE(outcomes->last().success, true);
    for (int i = 1; i <= failureCount; ++i)
        QCOMPARE(outcomes->at(i).success, false);

    const Alert &summary = m_presenter.alerts.first();
    QCOMPARE(summary.title, u"Some files could not be modified"_s);
    QString expectedClipboard = u"Failed to modify the following files:\n\n"_s;
    for (const QString &folder : std::as_const(folders))
        expectedClipboard += folder + u"\n  Error: Path is a directory\n\n"_s;
    if (failureCount == 1) {
        QCOMPARE(m_presenter.alerts.size(), 1);
        QCOMPARE(summary.text, u"folder-01.jpg: Path is a directory"_s);
        QCOMPARE(summary.buttons, QStringList {u"OK"_s});
        QVERIFY(m_clipboard.texts.isEmpty());
    } else {
        QCOMPARE(summary.text,
                 u"%1 files could not be modified. This may be due to permission issues or locked "
                 "files."_s.arg(failureCount));
        QCOMPARE(summary.buttons, (QStringList {u"OK"_s, u"Show Details…"_s}));
        QCOMPARE(m_presenter.alerts.size(), 2);
        const Alert &details = m_presenter.alerts.at(1);
        QCOMPARE(details.title, u"Failed Files"_s);
        QCOMPARE(details.buttons, (QStringList {u"OK"_s, u"Copy to Clipboard"_s}));
        QString expected;
        for (int i = 1; i <= std::min(failureCount, 20); ++i)
            expected += u"%1. folder-%2.jpg\n   Path is a directory\n\n"_s.arg(i).arg(i, 2, 10,
                                                                                      QChar(u'0'));
        if (failureCount > 20)
            expected += u"… and %1 more files"_s.arg(failureCount - 20);
        QCOMPARE(details.text, expected);
        QCOMPARE(m_clipboard.texts, QStringList {expectedClipboard});
    }

    // The alert cleared the failures: a clean batch afterwards shows nothing.
    m_presenter.alerts.clear();
    enqueue(first, {u"City"_s, u"Brugge"_s}, outcomes);
    QVERIFY(TestSupport::waitUntil([&] { return outcomes->size() == failureCount + 3; }, 30000));
    QVERIFY(TestSupport::waitForWrites());
    QVERIFY(m_presenter.alerts.isEmpty());
}

// While a batch runs the status names the file being written; afterwards it is idle.
void tst_WriteEngine::viewModelFollowsTheBatch()
{
    const QStringList paths
        = {copyOfJpeg(u"vm-1.jpg"_s), copyOfJpeg(u"vm-2.jpg"_s), copyOfJpeg(u"vm-3.jpg"_s)};
    auto outcomes = std::make_shared<QList<Outcome>>();
    for (const QString &path : paths)
        enqueue(path, {u"City"_s, u"Köln"_s}, outcomes);
    WriteEngine::shared().flushImmediately();

    QList<int> indexes;
    QSet<QString> pathsSeen;
    bool consistent = true;
    QVERIFY(TestSupport::waitUntil(
        [&] {
            const WriteEngineViewModel model = WriteEngine::shared().createViewModel();
            if (model.isActive) {
                // Index and path are read apart and may be a file out of step; the path is
                // absent until the first file starts.
                consistent = consistent && model.totalFileCount == 3 && !model.indeterminateProgress
                    && model.currentFileIndex >= 0 && model.currentFileIndex < 3
                    && (!model.currentFilePath || paths.contains(*model.currentFilePath));
                if (indexes.isEmpty() || indexes.last() != model.currentFileIndex)
                    indexes.append(model.currentFileIndex);
                if (model.currentFilePath)
                    pathsSeen.insert(*model.currentFilePath);
            }
            return outcomes->size() == 3;
        },
        30000));
    QVERIFY(consistent);
    QVERIFY(!indexes.isEmpty());
    QVERIFY(std::is_sorted(indexes.cbegin(), indexes.cend()));
    // Each write takes a worker's start-up, long enough to be seen.
    QCOMPARE(pathsSeen.size(), 3);
    QVERIFY(TestSupport::waitForWrites());

    const WriteEngineViewModel idle = WriteEngine::shared().createViewModel();
    QCOMPARE(idle.isActive, false);
    QCOMPARE(idle.currentFileIndex, 0);
    QCOMPARE(idle.totalFileCount, 0);
    QVERIFY(!idle.currentFilePath);
}

// As at quit: writes still waiting for the delay are written before the wait returns.
void tst_WriteEngine::waitForCompletionWritesEverything()
{
    const QString a = copyOfJpeg(u"quit-a.jpg"_s);
    const QString b = copyOfJpeg(u"quit-b.jpg"_s);
    auto outcomes = std::make_shared<QList<Outcome>>();
    enqueue(a, {u"City"_s, u"Turku"_s}, outcomes);
    enqueue(b, {u"City"_s, u"Espoo"_s}, outcomes);
    WriteEngine::shared().waitForCompletion();
    QVERIFY(!WriteEngine::shared().hasPendingWrites());
    QCOMPARE(outcomes->size(), 2);
    QCOMPARE(iptc(a, u"City"_s), u"Turku"_s);
    QCOMPARE(iptc(b, u"City"_s), u"Espoo"_s);
}

// From another thread the flush waits for the main thread to drop the timer, then starts the
// writes.
void tst_WriteEngine::flushImmediatelyFromBackgroundThread()
{
    const QString a = copyOfJpeg(u"thread.jpg"_s);
    auto outcomes = std::make_shared<QList<Outcome>>();
    enqueue(a, {u"City"_s, u"Riga"_s}, outcomes);
    std::atomic_bool returned = false;
    std::thread flusher([&] {
        WriteEngine::shared().flushImmediately();
        returned = true;
    });
    // The main thread isn't turning its event loop, so the flush can't have returned.
    QTest::qSleep(100);
    const bool returnedWithoutMainThread = returned;
    const bool flushReturned = TestSupport::waitUntil([&] { return bool(returned); });
    flusher.join();
    QVERIFY(!returnedWithoutMainThread);
    QVERIFY(flushReturned);
    QVERIFY(TestSupport::waitUntil([&] { return outcomes->size() == 1; }, 30000));
    QCOMPARE(outcomes->first().success, true);
    QCOMPARE(iptc(a, u"City"_s), u"Riga"_s);
}

// One worker serves batch after batch, and goes once no write has come for the idle delay.
void tst_WriteEngine::writeWorkerIsKeptWhileWritesCome()
{
    WriteEngine &engine = WriteEngine::shared();
    engine.setWriteWorkerIdleDelay(std::chrono::seconds(2));
    auto outcomes = std::make_shared<QList<Outcome>>();
    enqueue(copyOfJpeg(u"kept-a.jpg"_s), {u"City"_s, u"Oslo"_s}, outcomes);
    QVERIFY(TestSupport::waitForWrites());
    QVERIFY(engine.hasWriteWorker());
    const pid_t pid = engine.writeWorker()->processIdentifier();
    QVERIFY(pid > 0);

    enqueue(copyOfJpeg(u"kept-b.jpg"_s), {u"City"_s, u"Bergen"_s}, outcomes);
    QVERIFY(TestSupport::waitForWrites());
    QCOMPARE(engine.writeWorker()->processIdentifier(), pid);
    QCOMPARE(outcomes->size(), 2);

    QVERIFY(TestSupport::waitUntil([&] { return !engine.hasWriteWorker(); }, 10000));
    QVERIFY(TestSupport::waitUntil([&] { return !ChildProcess::processorTime(pid); }, 10000));
    engine.setWriteWorkerIdleDelay(std::chrono::minutes(1));
}

QTEST_GUILESS_MAIN(tst_WriteEngine)
#include "tst_WriteEngine.moc"
