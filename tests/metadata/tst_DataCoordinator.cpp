#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"
#include "metadata/RetrievalOperations.h"
#include "platform/ByteCountFormatter.h"
#include "session/Node.h"

#include "TestSupport.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>

namespace {

class RecordingObserver : public DataIsReadyObserver
{
public:
    void update(MetadataSource source) override { updates << int(source); }
    QList<int> updates;
};

// A reader that stores one value and counts its reads, to see when a source is read.
class CountingReader : public MetadataSourceReader
{
public:
    explicit CountingReader(MetadataSource source)
        : source(source)
    { }
    void retrieveAndStoreAllTagsFor(const QString &path) override
    {
        ++reads;
        MetadataStorage::shared().store(path, source, QStringLiteral("headline"),
                                        QStringLiteral("Harbour at dawn"));
    }
    MetadataSource source;
    std::atomic_int reads = 0;
};

NodePtr nodeFor(const QString &path)
{
    return FileNode::create(path.section(QLatin1Char('/'), -1), path, QString());
}

void writeFile(const QString &path, qsizetype size)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(size, 'x'));
}

} // namespace

class tst_DataCoordinator : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void basicInformationOfAFile_data();
    void basicInformationOfAFile();
    void vanishedFileIsMarkedWithoutValues();
    void linkReportsItsOwnAttributes();
    void displayStringWaitsThenObserversAreTold();
    void queuedReadsOfAMarkedSourceCostNothing();
    void sourcesWithoutReaderScheduleNothing();
    void invalidateReadsEverySourceAgain();
    void byteCountTexts_data();
    void byteCountTexts();

private:
    QTemporaryDir m_dir;
    std::shared_ptr<CountingReader> m_imageReader;
};

void tst_DataCoordinator::initTestCase()
{
    m_imageReader = std::make_shared<CountingReader>(MetadataSource::Spotlight);
    DataCoordinator::shared().setReader(MetadataSource::Spotlight, m_imageReader);
}

void tst_DataCoordinator::basicInformationOfAFile_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<QString>("kb");
    QTest::addColumn<QString>("mb");
    QTest::addColumn<QString>("human");
    QTest::newRow("empty") << 0 << QStringLiteral("0") << QStringLiteral("0")
                           << QStringLiteral("Zero KB");
    QTest::newRow("one byte") << 1 << QStringLiteral("1") << QStringLiteral("1")
                              << QStringLiteral("1 byte");
    QTest::newRow("1025 bytes") << 1025 << QStringLiteral("2") << QStringLiteral("1")
                                << QStringLiteral("1 KB");
    QTest::newRow("1.2 MB") << 1234567 << QStringLiteral("1206") << QStringLiteral("2")
                            << QStringLiteral("1.2 MB");
}

void tst_DataCoordinator::basicInformationOfAFile()
{
    QFETCH(int, size);
    const QString path = m_dir.filePath(QStringLiteral("basic-%1.bin").arg(size));
    writeFile(path, size);
    const QDateTime modified(QDate(2020, 5, 17), QTime(10, 30, 0), Qt::UTC);
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(modified, QFileDevice::FileModificationTime));
    }
    const NodePtr node = nodeFor(path);
    // The synchronous getter reads the source on this thread when it has not been read.
    QCOMPARE(node->getIntValueSync(QStringLiteral("size")), qint64(size));
    MetadataStorage &storage = MetadataStorage::shared();
    QTEST(storage.getStringValue(path, QStringLiteral("size_in_kb"), MetadataSource::Basic)
              .value_or(QString()),
          "kb");
    QTEST(storage.getStringValue(path, QStringLiteral("size_in_mb"), MetadataSource::Basic)
              .value_or(QString()),
          "mb");
    QTEST(storage.getStringValue(path, QStringLiteral("human_readable_size"), MetadataSource::Basic)
              .value_or(QString()),
          "human");
    QCOMPARE(storage.getStringValue(path, QStringLiteral("size_in_bytes"), MetadataSource::Basic),
             std::optional<QString>(QString::number(size)));
    QCOMPARE(node->getDateValueSync(QStringLiteral("modification_date")), modified);
    QVERIFY(
        storage.boolValueExistsAndIsTrue(path, QStringLiteral("retrieved"), MetadataSource::Basic));
}

void tst_DataCoordinator::vanishedFileIsMarkedWithoutValues()
{
    for (const QString &path : {m_dir.filePath(QStringLiteral("never-there.jpg")), m_dir.path()}) {
        const NodePtr node = nodeFor(path);
        GetBasicInformationOperation::retrieveInformation(*node);
        MetadataStorage &storage = MetadataStorage::shared();
        QVERIFY(storage.boolValueExistsAndIsTrue(path, QStringLiteral("retrieved"),
                                                 MetadataSource::Basic));
        if (path == m_dir.path())
            continue; // a directory has attributes, and reads them like a file
        QCOMPARE(node->getDisplayString(QStringLiteral("size")).kind(),
                 DisplayStringWrapper::Kind::NotPresent);
        QCOMPARE(node->getIntValueSync(QStringLiteral("size")), 0);
        QCOMPARE(node->getDateValueSync(QStringLiteral("creation_date")), Node::distantPast());
    }
}

void tst_DataCoordinator::linkReportsItsOwnAttributes()
{
    const QString target = m_dir.filePath(QStringLiteral("target.bin"));
    writeFile(target, 5000);
    const QString link = m_dir.filePath(QStringLiteral("link.bin"));
    QVERIFY(QFile::link(target, link));
    const NodePtr node = nodeFor(link);
    const qint64 size = node->getIntValueSync(QStringLiteral("size"));
    QCOMPARE(size, qint64(QFile::symLinkTarget(link).toUtf8().size()));
    QVERIFY(size != 5000);
}

void tst_DataCoordinator::displayStringWaitsThenObserversAreTold()
{
    const QString path = m_dir.filePath(QStringLiteral("observed.bin"));
    writeFile(path, 3000);
    const NodePtr node = nodeFor(path);
    auto first = std::make_shared<RecordingObserver>();
    auto second = std::make_shared<RecordingObserver>();
    auto dying = std::make_shared<RecordingObserver>();
    node->addDataObserver(first, QStringLiteral("size"));
    node->addDataObserver(dying, QStringLiteral("human_readable_size"));
    node->addDataObserver(second, QStringLiteral("human_readable_size"));
    dying.reset(); // an observer that died is skipped
    QCOMPARE(node->getDisplayString(QStringLiteral("human_readable_size")).kind(),
             DisplayStringWrapper::Kind::Waiting);
    QVERIFY(TestSupport::waitUntil([&] { return !second->updates.isEmpty(); }));
    QCOMPARE(first->updates, QList<int> {int(MetadataSource::Basic)});
    QCOMPARE(node->getDisplayString(QStringLiteral("human_readable_size")).text(),
             QStringLiteral("3 KB"));
    // Integers show as sizes in the display form.
    QCOMPARE(node->getDisplayString(QStringLiteral("size")).text(), QStringLiteral("3 KB"));

    node->remove(first.get(), MetadataSource::Basic);
    node->signalDataIsNowReady(MetadataSource::Basic);
    QVERIFY(TestSupport::waitUntil([&] { return second->updates.size() == 2; }));
    QCOMPARE(first->updates.size(), 1);
}

void tst_DataCoordinator::queuedReadsOfAMarkedSourceCostNothing()
{
    const QString path = m_dir.filePath(QStringLiteral("image.jpg"));
    writeFile(path, 10);
    const NodePtr node = nodeFor(path);
    const int before = m_imageReader->reads;
    // A table redrawing an unread cell schedules a read each time; only the first reads.
    QCOMPARE(node->getDisplayString(QStringLiteral("headline")).kind(),
             DisplayStringWrapper::Kind::Waiting);
    for (int i = 0; i < 49; ++i)
        node->getDisplayString(QStringLiteral("headline"));
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
    QCOMPARE(m_imageReader->reads - before, 1);
    QCOMPARE(node->getDisplayString(QStringLiteral("headline")).text(),
             QStringLiteral("Harbour at dawn"));
}

void tst_DataCoordinator::sourcesWithoutReaderScheduleNothing()
{
    const NodePtr node = nodeFor(m_dir.filePath(QStringLiteral("x.jpg")));
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
    DataCoordinator::shared().retrieveDataAsynchronously(node, MetadataSource::Node);
    DataCoordinator::shared().retrieveDataAsynchronously(node, MetadataSource::Computed);
    QCOMPARE(DataCoordinator::shared().queue().operationCount(), 0);
    // Basic information jumps ahead of waiting reads.
    QCOMPARE(DataCoordinator::makeOperation(node, MetadataSource::Basic)->queuePriority(),
             int(Operation::High));
    QCOMPARE(DataCoordinator::makeOperation(node, MetadataSource::XMP)->queuePriority(),
             int(Operation::Normal));
}

void tst_DataCoordinator::invalidateReadsEverySourceAgain()
{
    const QString path = m_dir.filePath(QStringLiteral("rewritten.jpg"));
    writeFile(path, 100);
    const NodePtr node = nodeFor(path);
    QCOMPARE(node->getIntValueSync(QStringLiteral("size")), 100);
    node->getStringValueSync(QStringLiteral("headline"));
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
    auto observer = std::make_shared<RecordingObserver>();
    node->addDataObserver(observer, QStringLiteral("size"));
    writeFile(path, 200);
    const int before = m_imageReader->reads;
    DataCoordinator::shared().invalidateData(node);
    // Read anew on this thread before the call returned.
    QCOMPARE(m_imageReader->reads - before, 1);
    QCOMPARE(MetadataStorage::shared().getObjCIntegerValue(path, QStringLiteral("size"),
                                                           MetadataSource::Basic),
             qint64(200));
    QVERIFY(MetadataStorage::shared().boolValueExistsAndIsTrue(path, QStringLiteral("retrieved"),
                                                               MetadataSource::Spotlight));
    QVERIFY(TestSupport::waitUntil([&] { return !observer->updates.isEmpty(); }));
}

void tst_DataCoordinator::byteCountTexts_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << qint64(0) << QStringLiteral("Zero KB");
    QTest::newRow("bytes") << qint64(999) << QStringLiteral("999 bytes");
    QTest::newRow("one KB") << qint64(1000) << QStringLiteral("1 KB");
    QTest::newRow("KB rounds") << qint64(1499) << QStringLiteral("1 KB");
    QTest::newRow("just under a MB") << qint64(999999) << QStringLiteral("1 MB");
    QTest::newRow("MB one decimal") << qint64(1250000) << QStringLiteral("1.3 MB");
    QTest::newRow("whole MB") << qint64(5000000) << QStringLiteral("5 MB");
    QTest::newRow("GB two decimals") << qint64(3250000000) << QStringLiteral("3.25 GB");
    QTest::newRow("thousands of KB never") << qint64(999499) << QStringLiteral("999 KB");
}

void tst_DataCoordinator::byteCountTexts()
{
    QFETCH(qint64, bytes);
    QTEST(ByteCountFormatter::stringFromByteCount(bytes), "text");
}

QTEST_GUILESS_MAIN(tst_DataCoordinator)
#include "tst_DataCoordinator.moc"
