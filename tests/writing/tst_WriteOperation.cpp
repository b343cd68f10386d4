#include "TestSupport.h"
#include "WriteFixtures.h"
#include "WriteTestDoubles.h"

#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"
#include "platform/AlertPresenter.h"
#include "platform/OperationQueue.h"
#include "session/Node.h"
#include "writing/WriteEngine.h"
#include "writing/WriteOperation.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace WriteTestDoubles;

namespace {

// Stands for a stale value that only a re-read replaces.
constexpr qint64 staleSize = -5;

qint64 storedSize(const QString &path)
{
    // A written file is read anew in the background.
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
    return MetadataStorage::shared().getObjCIntegerValue(path, u"size"_s, MetadataSource::Basic);
}

} // namespace

class tst_WriteOperation : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void failureInTheMiddle();
    void resultsWithoutEngine();

private:
    QString copyOfJpeg(const QString &name);
    QString m_jpeg;
    QTemporaryDir m_directory;
    RecordingPresenter m_presenter;
};

void tst_WriteOperation::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    QVERIFY(m_directory.isValid());
    m_jpeg = m_directory.filePath(u"fixture.jpg"_s);
    const QString made = WriteFixtures::makeFixture(m_jpeg);
    QVERIFY2(made.isEmpty(), qPrintable(made));
    AlertPresenter::install(&m_presenter);
}

void tst_WriteOperation::cleanupTestCase()
{
    AlertPresenter::install(nullptr);
}

QString tst_WriteOperation::copyOfJpeg(const QString &name)
{
    return freshCopy(m_jpeg, m_directory.filePath(name));
}

// The second of three fails: the others are re-read, the failure reaches the alert once, and
// every file's handlers hear their own result in batch order.
void tst_WriteOperation::failureInTheMiddle()
{
    const QString first = copyOfJpeg(u"first.jpg"_s);
    const QString unwritable = m_directory.filePath(u"sound.wav"_s);
    const QString made = WriteFixtures::makeFixture(unwritable);
    QVERIFY2(made.isEmpty(), qPrintable(made));
    const QString third = copyOfJpeg(u"third.jpg"_s);
    const QStringList paths = {first, unwritable, third};
    const QByteArray unwritableBefore = WriteFixtures::fileHash(unwritable);

    QList<ConsolidatedWrite> writes;
    auto results = std::make_shared<QList<QPair<QString, bool>>>();
    for (const QString &path : paths) {
        const QString name = QFileInfo(path).fileName();
        MetadataStorage::shared().store(path, MetadataSource::Basic, u"size"_s, staleSize);
        auto handler = [results, name](bool success) {
            results->append({name, success});
        };
        writes.append({path,
                       FileNode::create(name, path, name),
                       {u"City"_s, u"Lisboa"_s},
                       {handler, handler}});
    }

    m_presenter.alerts.clear();
    OperationQueue queue(u"test"_s, 1);
    auto operation
        = std::make_shared<WriteOperation>(writes, WriteEngine::shared().weak_from_this());
    QCOMPARE(operation->totalFileCount(), 3);
    queue.addOperation(operation);
    QVERIFY(TestSupport::waitUntil([&] { return results->size() == 6; }, 30000));
    QVERIFY(TestSupport::waitUntil([&] { return !m_presenter.alerts.isEmpty(); }));
    QTest::qWait(100);

    const QList<QPair<QString, bool>> expected
        = {{u"first.jpg"_s, true},  {u"first.jpg"_s, true}, {u"sound.wav"_s, false},
           {u"sound.wav"_s, false}, {u"third.jpg"_s, true}, {u"third.jpg"_s, true}};
    QCOMPARE(*results, expected);
    QCOMPARE(storedSize(first), QFileInfo(first).size());
    QCOMPARE(storedSize(third), QFileInfo(third).size());
    QCOMPARE(storedSize(unwritable), staleSize);
    QCOMPARE(WriteFixtures::fileHash(unwritable), unwritableBefore);
    QCOMPARE(WriteFixtures::numericValues(third).value(u"IPTC:City"_s).toString(), u"Lisboa"_s);

    QCOMPARE(m_presenter.alerts.size(), 1);
    const Alert &alert = m_presenter.alerts.first();
    QCOMPARE(alert.title, u"Some files could not be modified"_s);
    QVERIFY2(alert.text.startsWith(u"sound.wav: "_s), qPrintable(alert.text));
    QVERIFY(alert.text.size() > u"sound.wav: "_s.size());
    QCOMPARE(alert.buttons, QStringList {u"OK"_s});
    QCOMPARE(operation->currentFileIndex(), 2);
    QCOMPARE(operation->currentFilePath(), std::optional(third));
}

// With the engine gone the files are still written and their handlers told; nothing is
// recorded, so nothing is shown.
void tst_WriteOperation::resultsWithoutEngine()
{
    const QString file = copyOfJpeg(u"alone.jpg"_s);
    const QString folder = m_directory.filePath(u"folder.jpg"_s);
    QVERIFY(QDir().mkpath(folder));
    auto results = std::make_shared<QList<bool>>();
    auto handler = [results](bool success) {
        results->append(success);
    };
    QList<ConsolidatedWrite> writes = {{file, nullptr, {u"City"_s, u"Porto"_s}, {handler}},
                                       {folder, nullptr, {u"City"_s, u"Porto"_s}, {handler}}};
    m_presenter.alerts.clear();
    OperationQueue queue(u"test"_s, 1);
    queue.addOperation(std::make_shared<WriteOperation>(writes, std::weak_ptr<WriteEngine>()));
    QVERIFY(TestSupport::waitUntil([&] { return results->size() == 2; }, 30000));
    QTest::qWait(100);
    QCOMPARE(*results, (QList<bool> {true, false}));
    QCOMPARE(WriteFixtures::numericValues(file).value(u"IPTC:City"_s).toString(), u"Porto"_s);
    // A write without a node still refreshes the stored values of its file.
    QCOMPARE(storedSize(file), QFileInfo(file).size());
    QVERIFY(m_presenter.alerts.isEmpty());
}

QTEST_GUILESS_MAIN(tst_WriteOperation)
#include "tst_WriteOperation.moc"
