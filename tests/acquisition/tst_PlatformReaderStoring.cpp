#include "acquisition/AVKitHelper.h"
#include "acquisition/ImageIOHelper.h"
#include "acquisition/SpotlightHelper.h"
#include "commons/ApplicationStart.h"
#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"
#include "session/Node.h"

#include "ReaderFixtures.h"
#include "TestSupport.h"

#include <QTemporaryDir>
#include <QTest>

// The readers' values reach the store under their own source and nowhere else, and a node
// shows them once the retrieval operations have run them.
class tst_PlatformReaderStoring : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void nodesShowTheSearchIndexAttributes();
    void retrievalReadsEachSourceAndSetsItsMarker();
    void unreadableFileIsMarkedWithoutValues();

private:
    QTemporaryDir m_dir;
    QString m_jpeg;
    QString m_mp4;
};

static NodePtr nodeFor(const QString &path)
{
    return FileNode::create(path.section(QLatin1Char('/'), -1), path, QString());
}

void tst_PlatformReaderStoring::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_jpeg = ReaderFixtures::jpegWithMetadata(m_dir.path());
    m_mp4 = ReaderFixtures::mp4WithLocation(m_dir.path());
    QVERIFY(!m_jpeg.isEmpty() && !m_mp4.isEmpty());
    ApplicationStart::installMetadataReaders();
}

void tst_PlatformReaderStoring::nodesShowTheSearchIndexAttributes()
{
    const NodePtr photo = nodeFor(m_jpeg);
    const NodePtr clip = nodeFor(m_mp4);
    // The first ask schedules the read; the answer comes once the queue has run it.
    photo->getDisplayString("keywords");
    clip->getDisplayString("duration");
    QVERIFY(TestSupport::waitUntil([&] {
        return photo->getDisplayString("keywords").kind() == DisplayStringWrapper::Kind::Present
            && clip->getDisplayString("duration").kind() == DisplayStringWrapper::Kind::Present;
    }));
    QCOMPARE(photo->getDisplayString("keywords").text(), "alpha, beta, gamma");
    QCOMPARE(photo->getDisplayString("city").text(), "Paris");
    QCOMPARE(photo->getDisplayString("make").text(), "Canon");
    QCOMPARE(clip->getDisplayString("duration").text(), "1.5");
    QCOMPARE(clip->getDisplayString("human_readable_duration").text(), "1 second");
    QCOMPARE(clip->getDisplayString("codecs").text(), "AVC, AAC");
    QCOMPARE(clip->getDisplayString("latitude").text(), "48.8584");
}

void tst_PlatformReaderStoring::retrievalReadsEachSourceAndSetsItsMarker()
{
    const QString mp4 = QDir(m_dir.path()).filePath("retrieved.mp4");
    QVERIFY(QFile::copy(m_mp4, mp4));
    const NodePtr node = nodeFor(mp4);
    MetadataStorage &storage = MetadataStorage::shared();
    for (MetadataSource source :
         {MetadataSource::ImageIO, MetadataSource::AVKit, MetadataSource::Spotlight}) {
        DataCoordinator::retrieveInformation(*node, source);
        QVERIFY(storage.boolValueExistsAndIsTrue(mp4, "retrieved", source));
    }
    QCOMPARE(storage.getStringValue(mp4, "av_location", MetadataSource::AVKit),
             std::optional<QString>("+48.8584+002.2945/"));
    QCOMPARE(storage.getStringValue(mp4, "pixelwidth", MetadataSource::Spotlight),
             std::optional<QString>("160"));
    // Each reader's values under its own source only.
    QCOMPARE(storage.getStringValue(mp4, "av_location", MetadataSource::Spotlight), std::nullopt);
    // An MP4 is no image type: nothing under source 3 but the marker.
    QVERIFY(storage.getKeysForAllAvailableStringValues(mp4, MetadataSource::ImageIO).isEmpty());
}

void tst_PlatformReaderStoring::unreadableFileIsMarkedWithoutValues()
{
    const QString broken = QDir(m_dir.path()).filePath("broken.jpg");
    QFile file(broken);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("not an image at all");
    file.close();
    const NodePtr node = nodeFor(broken);
    MetadataStorage &storage = MetadataStorage::shared();
    for (MetadataSource source : {MetadataSource::ImageIO, MetadataSource::AVKit}) {
        DataCoordinator::retrieveInformation(*node, source);
        QVERIFY(storage.boolValueExistsAndIsTrue(broken, "retrieved", source));
        QVERIFY(storage.getKeysForAllAvailableStringValues(broken, source).isEmpty());
    }
}

QTEST_GUILESS_MAIN(tst_PlatformReaderStoring)
#include "tst_PlatformReaderStoring.moc"
