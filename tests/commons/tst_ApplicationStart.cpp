#include "commons/ApplicationStart.h"
#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"
#include "session/Node.h"

#include "ReaderFixtures.h"
#include "TestSupport.h"

#include <QTemporaryDir>
#include <QTest>

// After start-up, a node reaches the values of every reader through the store.
class tst_ApplicationStart : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { ApplicationStart::installMetadataReaders(); }
    void nodesReadEverySourceThroughTheInstalledReaders();
};

void tst_ApplicationStart::nodesReadEverySourceThroughTheInstalledReaders()
{
    QTemporaryDir dir;
    const QString jpeg = ReaderFixtures::jpegWithMetadata(dir.path());
    const QString mp4 = ReaderFixtures::mp4WithLocation(dir.path());
    QVERIFY(!jpeg.isEmpty() && !mp4.isEmpty());
    const NodePtr photo = FileNode::create(QStringLiteral("photo"), jpeg, QString());
    const NodePtr movie = FileNode::create(QStringLiteral("movie"), mp4, QString());

    // The search index's attributes arrive in the background.
    QVERIFY(TestSupport::waitUntil(
        [&] { return movie->getDisplayString(QStringLiteral("duration")).isPresent(); }));
    QCOMPARE(movie->getDisplayString(QStringLiteral("duration")).text(), QStringLiteral("1.5"));

    // Sources without catalogue keys are read through the coordinator, once, with their marker.
    DataCoordinator::retrieveInformation(*photo, MetadataSource::ImageIO);
    DataCoordinator::retrieveInformation(*movie, MetadataSource::AVKit);
    MetadataStorage &storage = MetadataStorage::shared();
    QCOMPARE(storage.getStringValue(jpeg, QStringLiteral("iptc_keywords"), MetadataSource::ImageIO),
             std::optional<QString>(QStringLiteral("alpha, beta, gamma")));
    QCOMPARE(storage.getStringValue(mp4, QStringLiteral("av_title"), MetadataSource::AVKit),
             std::optional<QString>(QStringLiteral("Eiffel clip")));
    QVERIFY(storage.boolValueExistsAndIsTrue(jpeg, QStringLiteral("retrieved"),
                                             MetadataSource::ImageIO));
    // The embedded read ran as well, with its status flags.
    QVERIFY(TestSupport::waitUntil(
        [&] { return photo->getDisplayString(QStringLiteral("GPSDataAvailable")).isPresent(); }));
}

QTEST_GUILESS_MAIN(tst_ApplicationStart)
#include "tst_ApplicationStart.moc"
