#include "map/MediaFileMarkers.h"
#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"
#include "metadata/RetrievalOperations.h"
#include "platform/ByteCountFormatter.h"
#include "platform/MainQueue.h"
#include "session/Node.h"
#include "writing/FileOperationLock.h"

#include "TestSupport.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

using namespace Qt::StringLiterals;

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
        MetadataStorage::shared().store(path, source, u"headline"_s, u"Harbour at dawn"_s);
    }
    MetadataSource source;
    std::atomic_int reads = 0;
};

// Map markers as the map keeps them, with the order of events; the embedded read adds from the
// queue's thread.
class RecordingMarkers : public MediaFileMarkers
{
public:
    void addMarker(const NodePtr &node) override
    {
        std::lock_guard lock(mutex);
        events << u"add "_s + node->absolutePath;
    }
    void removeAllMediaFileMarkers() override { }
    void removeMediaFileMarker(const QString &path) override
    {
        QVERIFY(MainQueue::isMainThread());
        std::lock_guard lock(mutex);
        events << u"remove "_s + path;
    }
    std::mutex mutex;
    QStringList events;
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
    void cleanupTestCase() { MediaFileMarkers::install(nullptr); }
    void basicInformationOfAFile_data();
    void basicInformationOfAFile();
    void vanishedFileIsMarkedWithoutValues();
    void linkReportsItsOwnAttributes();
    void displayStringWaitsThenObserversAreTold();
    void queuedReadsOfAMarkedSourceCostNothing();
    void sourcesWithoutReaderScheduleNothing();
    void invalidationRereadsOnTheQueueOnce();
    void byteCountTexts_data();
    void byteCountTexts();

private:
    QTemporaryDir m_dir;
    std::shared_ptr<CountingReader> m_searchIndexReader;
    std::shared_ptr<CountingReader> m_imageReader;
    std::atomic_int m_embeddedReads = 0;
    std::atomic_bool m_embeddedReadOnMainThread = false;
    RecordingMarkers m_markers;
};

void tst_DataCoordinator::initTestCase()
{
    DataCoordinator &coordinator = DataCoordinator::shared();
    m_searchIndexReader = std::make_shared<CountingReader>(MetadataSource::Spotlight);
    coordinator.setReader(MetadataSource::Spotlight, m_searchIndexReader);
    m_imageReader = std::make_shared<CountingReader>(MetadataSource::ImageIO);
    coordinator.setReader(MetadataSource::ImageIO, m_imageReader);
    // The embedded read as the application's does it: the marker, the map marker, the signal.
    coordinator.setExifToolRetrieval([this](const Node &node) {
        ++m_embeddedReads;
        if (MainQueue::isMainThread())
            m_embeddedReadOnMainThread = true;
        MetadataStorage::shared().store(node.absolutePath, MetadataSource::ExifToolGeneric,
                                        u"retrieved"_s, true);
        m_markers.addMarker(std::const_pointer_cast<Node>(node.shared_from_this()));
        node.signalDataIsNowReady(MetadataSource::ExifToolGeneric);
    });
    MediaFileMarkers::install(&m_markers);
}

void tst_DataCoordinator::basicInformationOfAFile_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<QString>("kb");
    QTest::addColumn<QString>("mb");
    QTest::addColumn<QString>("human");
    QTest::newRow("empty") << 0 << u"0"_s << u"0"_s << u"Zero KB"_s;
    QTest::newRow("one byte") << 1 << u"1"_s << u"1"_s << u"1 byte"_s;
    QTest::newRow("1025 bytes") << 1025 << u"2"_s << u"1"_s << u"1 KB"_s;
    QTest::newRow("1.2 MB") << 1234567 << u"1206"_s << u"2"_s << u"1.2 MB"_s;
}

void tst_DataCoordinator::basicInformationOfAFile()
{
    QFETCH(int, size);
    const QString path = m_dir.filePath(u"basic-%1.bin"_s.arg(size));
    writeFile(path, size);
    const QDateTime modified(QDate(2020, 5, 17), QTime(10, 30, 0), Qt::UTC);
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(modified, QFileDevice::FileModificationTime));
    }
    const NodePtr node = nodeFor(path);
    // The synchronous getter reads the source on this thread when it has not been read.
    QCOMPARE(node->getIntValueSync(u"size"_s), qint64(size));
    MetadataStorage &storage = MetadataStorage::shared();
    QTEST(storage.getStringValue(path, u"size_in_kb"_s, MetadataSource::Basic).value_or(QString()),
          "kb");
    QTEST(storage.getStringValue(path, u"size_in_mb"_s, MetadataSource::Basic).value_or(QString()),
          "mb");
    QTEST(storage.getStringValue(path, u"human_readable_size"_s, MetadataSource::Basic)
              .value_or(QString()),
          "human");
    QCOMPARE(storage.getStringValue(path, u"size_in_bytes"_s, MetadataSource::Basic),
             std::optional<QString>(QString::number(size)));
    QCOMPARE(node->getDateValueSync(u"modification_date"_s), modified);
    QVERIFY(storage.boolValueExistsAndIsTrue(path, u"retrieved"_s, MetadataSource::Basic));
}

void tst_DataCoordinator::vanishedFileIsMarkedWithoutValues()
{
    for (const QString &path : {m_dir.filePath(u"never-there.jpg"_s), m_dir.path()}) {
        const NodePtr node = nodeFor(path);
        GetBasicInformationOperation::retrieveInformation(*node);
        MetadataStorage &storage = MetadataStorage::shared();
        QVERIFY(storage.boolValueExistsAndIsTrue(path, u"retrieved"_s, MetadataSource::Basic));
        if (path == m_dir.path())
            continue; // a directory has attributes, and reads them like a file
        QCOMPARE(node->getDisplayString(u"size"_s).kind(), DisplayStringWrapper::Kind::NotPresent);
        QCOMPARE(node->getIntValueSync(u"size"_s), 0);
        QCOMPARE(node->getDateValueSync(u"creation_date"_s), Node::distantPast());
    }
}

void tst_DataCoordinator::linkReportsItsOwnAttributes()
{
    const QString target = m_dir.filePath(u"target.bin"_s);
    writeFile(target, 5000);
    const QString link = m_dir.filePath(u"link.bin"_s);
    QVERIFY(QFile::link(target, link));
    const NodePtr node = nodeFor(link);
    const qint64 size = node->getIntValueSync(u"size"_s);
    QCOMPARE(size, qint64(QFile::symLinkTarget(link).toUtf8().size()));
    QVERIFY(size != 5000);
}

void tst_DataCoordinator::displayStringWaitsThenObserversAreTold()
{
    const QString path = m_dir.filePath(u"observed.bin"_s);
    writeFile(path, 3000);
    const NodePtr node = nodeFor(path);
    auto first = std::make_shared<RecordingObserver>();
    auto second = std::make_shared<RecordingObserver>();
    auto dying = std::make_shared<RecordingObserver>();
    node->addDataObserver(first, u"size"_s);
    node->addDataObserver(dying, u"human_readable_size"_s);
    node->addDataObserver(second, u"human_readable_size"_s);
    dying.reset(); // an observer that died is skipped
    QCOMPARE(node->getDisplayString(u"human_readable_size"_s).kind(),
             DisplayStringWrapper::Kind::Waiting);
    QVERIFY(TestSupport::waitUntil([&] { return !second->updates.isEmpty(); }));
    QCOMPARE(first->updates, QList<int> {int(MetadataSource::Basic)});
    QCOMPARE(node->getDisplayString(u"human_readable_size"_s).text(), u"3 KB"_s);
    // Integers show as sizes in the display form.
    QCOMPARE(node->getDisplayString(u"size"_s).text(), u"3 KB"_s);

    node->remove(first.get(), MetadataSource::Basic);
    node->signalDataIsNowReady(MetadataSource::Basic);
    QVERIFY(TestSupport::waitUntil([&] { return second->updates.size() == 2; }));
    QCOMPARE(first->updates.size(), 1);
}

void tst_DataCoordinator::queuedReadsOfAMarkedSourceCostNothing()
{
    const QString path = m_dir.filePath(u"image.jpg"_s);
    writeFile(path, 10);
    const NodePtr node = nodeFor(path);
    const int before = m_searchIndexReader->reads;
    // A table redrawing an unread cell schedules a read each time; only the first reads.
    QCOMPARE(node->getDisplayString(u"headline"_s).kind(), DisplayStringWrapper::Kind::Waiting);
    for (int i = 0; i < 49; ++i)
        node->getDisplayString(u"headline"_s);
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
    QCOMPARE(m_searchIndexReader->reads - before, 1);
    QCOMPARE(node->getDisplayString(u"headline"_s).text(), u"Harbour at dawn"_s);
}

void tst_DataCoordinator::sourcesWithoutReaderScheduleNothing()
{
    const NodePtr node = nodeFor(m_dir.filePath(u"x.jpg"_s));
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

void tst_DataCoordinator::invalidationRereadsOnTheQueueOnce()
{
    const QString path = m_dir.filePath(u"rewritten.jpg"_s);
    writeFile(path, 100);
    const NodePtr node = nodeFor(path);
    QCOMPARE(node->getIntValueSync(u"size"_s), 100);
    node->getStringValueSync(u"headline"_s);
    DataCoordinator &coordinator = DataCoordinator::shared();
    coordinator.queue().waitUntilAllOperationsAreFinished();
    auto observer = std::make_shared<RecordingObserver>();
    node->addDataObserver(observer, u"size"_s);

    // The queue is busy while the file is invalidated, twice.
    std::atomic_bool started = false;
    std::atomic_bool release = false;
    coordinator.queue().addOperation([&] {
        started = true;
        while (!release)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    });
    QVERIFY(TestSupport::waitUntil([&] { return started.load(); }));
    writeFile(path, 200);
    const int spotlightBefore = m_searchIndexReader->reads;
    const int embeddedBefore = m_embeddedReads;
    const int imageBefore = m_imageReader->reads;
    m_markers.events.clear();
    coordinator.invalidateData(node);
    coordinator.invalidateData(node);
    // The values are gone at once, the marker too, and the next write of the file waits.
    QCOMPARE(node->getDisplayString(u"size"_s).kind(), DisplayStringWrapper::Kind::Waiting);
    QCOMPARE(m_markers.events, QStringList({u"remove "_s + path, u"remove "_s + path}));
    QCOMPARE(FileOperationLock::shared().anyMetadataRetrievalActive({path}), QStringList {path});

    release = true;
    QVERIFY(TestSupport::waitUntil([&] { return !observer->updates.isEmpty(); }));
    coordinator.queue().waitUntilAllOperationsAreFinished();
    QCOMPARE(node->getIntValueSync(u"size"_s), 200);
    // One re-read for both: the embedded metadata once, off the main thread, the search index
    // once as it had been read, the image source not at all as it had not.
    QCOMPARE(m_embeddedReads - embeddedBefore, 1);
    QVERIFY(!m_embeddedReadOnMainThread);
    QCOMPARE(m_searchIndexReader->reads - spotlightBefore, 1);
    QCOMPARE(m_imageReader->reads - imageBefore, 0);
    QVERIFY(!MetadataStorage::shared().boolValueExistsAndIsTrue(path, u"retrieved"_s,
                                                                MetadataSource::ImageIO));
    QCOMPARE(m_markers.events.last(), u"add "_s + path);
    QVERIFY(TestSupport::waitUntil(
        [&] { return FileOperationLock::shared().anyMetadataRetrievalActive({path}).isEmpty(); }));
}

void tst_DataCoordinator::byteCountTexts_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << qint64(0) << u"Zero KB"_s;
    QTest::newRow("bytes") << qint64(999) << u"999 bytes"_s;
    QTest::newRow("one KB") << qint64(1000) << u"1 KB"_s;
    QTest::newRow("KB rounds") << qint64(1499) << u"1 KB"_s;
    QTest::newRow("just under a MB") << qint64(999999) << u"1 MB"_s;
    QTest::newRow("MB one decimal") << qint64(1250000) << u"1.3 MB"_s;
    QTest::newRow("whole MB") << qint64(5000000) << u"5 MB"_s;
    QTest::newRow("GB two decimals") << qint64(3250000000) << u"3.25 GB"_s;
    QTest::newRow("thousands of KB never") << qint64(999499) << u"999 KB"_s;
}

void tst_DataCoordinator::byteCountTexts()
{
    QFETCH(qint64, bytes);
    QTEST(ByteCountFormatter::stringFromByteCount(bytes), "text");
}

QTEST_GUILESS_MAIN(tst_DataCoordinator)
#include "tst_DataCoordinator.moc"
