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
