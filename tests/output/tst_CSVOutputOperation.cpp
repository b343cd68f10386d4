#include "Fixtures.h"
#include "OutputFixture.h"
#include "ReaderFixtures.h"
#include "commons/ApplicationStart.h"
#include "map/HeadlessMapView.h"
#include "output/CSVOutputOperation.h"

#include "TestSupport.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_CSVOutputOperation : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void annotations_data();
    void annotations();
    void leadingDecimal_data();
    void leadingDecimal();
    void runsOnTheEngineQueueAndMakesNoText();
    void realPhotoReadByTheImageReader();

private:
    // The headless map, installed for one test function.
    struct InstalledMap
    {
        InstalledMap() { MapAnnotationSink::install(&map); }
        ~InstalledMap() { MapAnnotationSink::install(nullptr); }
        HeadlessMapView map;
    };
    OutputFixture m_files;
    int m_fileNumber = 0;
};

void tst_CSVOutputOperation::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
}

void tst_CSVOutputOperation::annotations_data()
{
    QTest::addColumn<QString>("latitude");
    QTest::addColumn<QString>("latitudeRef");
    QTest::addColumn<QString>("longitude");
    QTest::addColumn<QString>("longitudeRef");
    QTest::addColumn<QString>("city"); // empty: none stored
    QTest::addColumn<bool>("placed");
    QTest::addColumn<double>("expectedLatitude");
    QTest::addColumn<double>("expectedLongitude");

    QTest::newRow("north east with a city") << u"48.8584"_s << u"N"_s << u"2.2945"_s << u"E"_s
                                            << u"Paris"_s << true << 48.8584 << 2.2945;
    QTest::newRow("south west, no city") << u"33.8688"_s << u"S"_s << u"151.2093"_s << u"W"_s
                                         << QString() << true << -33.8688 << -151.2093;
    QTest::newRow("trailing text after the number")
        << u" 10.5 deg"_s << u"N"_s << u"-20"_s << u"W"_s << QString() << true << 10.5 << 20.0;
    QTest::newRow("reference in lower case")
        << u"48.8"_s << u"n"_s << u"2.2"_s << u"E"_s << QString() << false << 0.0 << 0.0;
    QTest::newRow("reference with a blank")
        << u"48.8"_s << u"N "_s << u"2.2"_s << u"E"_s << QString() << false << 0.0 << 0.0;
    QTest::newRow("longitude reference N")
        << u"48.8"_s << u"N"_s << u"2.2"_s << u"N"_s << QString() << false << 0.0 << 0.0;
    QTest::newRow("no number") << u"north"_s << u"N"_s << u"2.2"_s << u"E"_s << QString() << false
                               << 0.0 << 0.0;
    QTest::newRow("comma is not a decimal separator")
        << u"48,5"_s << u"N"_s << u"2,5"_s << u"E"_s << QString() << true << 48.0 << 2.0;
    QTest::newRow("missing longitude")
        << u"48.8"_s << u"N"_s << QString() << u"E"_s << QString() << false << 0.0 << 0.0;
}

void tst_CSVOutputOperation::annotations()
{
    QFETCH(QString, latitude);
    QFETCH(QString, latitudeRef);
    QFETCH(QString, longitude);
    QFETCH(QString, longitudeRef);
    QFETCH(QString, city);
    const NodePtr node = m_files.file(u"IMG_%1.jpg"_s.arg(++m_fileNumber));
    const auto storeText = [&](const QString &key, const QString &value) {
        if (!value.isNull())
            m_files.store(node, MetadataSource::ImageIO, key, value);
    };
    storeText(u"gps_latitude"_s, latitude);
    storeText(u"gps_latitude_ref"_s, latitudeRef);
    storeText(u"gps_longitude"_s, longitude);
    storeText(u"gps_longitude_ref"_s, longitudeRef);
    storeText(u"iptc_city"_s, city);

    InstalledMap installed;
    const HeadlessMapView &map = installed.map;
    CSVOutputOperation operation(DataModelSnapshot(), nullptr, OutputFixture::list({node}));
    operation.main();
    QVERIFY(TestSupport::drainMainQueue());

    QFETCH(bool, placed);
    QCOMPARE(map.pointAnnotations().size(), placed ? 1 : 0);
    if (!placed)
        return;
    const PointAnnotation &annotation = map.pointAnnotations().first();
    QTEST(annotation.latitude, "expectedLatitude");
    QTEST(annotation.longitude, "expectedLongitude");
    QCOMPARE(annotation.title, city.isNull() ? std::nullopt : std::optional(city));
    // The padded name, as the list sorts by it.
    QCOMPARE(annotation.subtitle, node->smartName);
    QVERIFY(annotation.subtitle.contains(u"00000000"_s));
}

void tst_CSVOutputOperation::leadingDecimal_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<std::optional<double>>("expected");
    QTest::newRow("plain") << u"12.25"_s << std::optional(12.25);
    QTest::newRow("signed with exponent") << u"-1.5e2"_s << std::optional(-150.0);
    QTest::newRow("dangling exponent") << u"7e"_s << std::optional(7.0);
    QTest::newRow("leading point") << u".5"_s << std::optional(0.5);
    QTest::newRow("sign alone") << u"-"_s << std::optional<double>();
    QTest::newRow("empty") << QString() << std::optional<double>();
    QTest::newRow("infinity is not a decimal") << u"inf"_s << std::optional<double>();
}

void tst_CSVOutputOperation::leadingDecimal()
{
    QFETCH(QString, text);
    QTEST(CSVOutputOperation::leadingDecimal(text), "expected");
}

void tst_CSVOutputOperation::runsOnTheEngineQueueAndMakesNoText()
{
    const auto storePosition = [&](const NodePtr &node, const auto &latitude) {
        m_files.store(node, MetadataSource::ImageIO, u"gps_latitude"_s, latitude);
        m_files.store(node, MetadataSource::ImageIO, u"gps_latitude_ref"_s, u"N"_s);
        m_files.store(node, MetadataSource::ImageIO, u"gps_longitude"_s, u"2.5"_s);
        m_files.store(node, MetadataSource::ImageIO, u"gps_longitude_ref"_s, u"E"_s);
    };
    const NodePtr placed = m_files.file(u"placed.jpg"_s);
    storePosition(placed, u"1.5"_s);
    // A number where text is expected: skipped.
    const NodePtr odd = m_files.file(u"odd.jpg"_s);
    storePosition(odd, qint64(1));

    auto engine = OutputEngine::create(nullptr);
    InstalledMap installed;
    const HeadlessMapView &map = installed.map;
    DataModelSnapshot snapshot;
    snapshot.columnList = {u"name"_s};
    // The default format, with settings that would change any text format.
    snapshot.quoteStrings = false;
    snapshot.includeColumnTitlesMode = 2;
    engine->launchOutputOperation(snapshot, OutputFixture::list({odd, placed}));
    QVERIFY(TestSupport::waitUntil([&] { return engine->currentOutputString().has_value(); }));
    QCOMPARE(engine->currentOutputString(), std::optional(QString()));
    QCOMPARE(engine->currentFileCount(), std::optional(2));
    QVERIFY(TestSupport::drainMainQueue());
    QCOMPARE(map.pointAnnotations().size(), 1);
    QCOMPARE(map.pointAnnotations().first().latitude, 1.5);
    QCOMPARE(map.pointAnnotations().first().subtitle, placed->smartName);

    // A second pass replaces the markers of the first.
    engine->launchOutputOperation(snapshot, OutputFixture::list({placed}));
    QVERIFY(TestSupport::drainMainQueue());
    QVERIFY(TestSupport::waitUntil([&] { return engine->currentFileCount() == 1; }));
    QVERIFY(TestSupport::drainMainQueue());
    QCOMPARE(map.pointAnnotations().size(), 1);
}

void tst_CSVOutputOperation::realPhotoReadByTheImageReader()
{
    ApplicationStart::installMetadataReaders();
    QTemporaryDir dir;
    const QString path = ReaderFixtures::jpegWithMetadata(dir.path(), u"IMG_7.jpg"_s);
    QVERIFY(!path.isEmpty());
    // A photo without any position beside it.
    const QString plain = Fixtures::makeJpeg(dir.path(), u"plain.jpg"_s);
    QVERIFY(!plain.isEmpty());
    const QList<NodePtr> nodes = {FileNode::create(u"IMG_7.jpg"_s, path, u"IMG_7.jpg"_s),
                                  FileNode::create(u"plain.jpg"_s, plain, u"plain.jpg"_s)};

    InstalledMap installed;
    // The image reader's source has not been read: the pass reads it on its own thread.
    CSVOutputOperation operation(DataModelSnapshot(), nullptr, OutputFixture::list(nodes));
    operation.main();
    QVERIFY(TestSupport::drainMainQueue());
    QCOMPARE(installed.map.pointAnnotations().size(), 1);
    const PointAnnotation &annotation = installed.map.pointAnnotations().first();
    QVERIFY(qAbs(annotation.latitude - 48.8584) < 1e-6);
    QVERIFY(qAbs(annotation.longitude + 2.2945) < 1e-6);
    QCOMPARE(annotation.title, std::optional(u"Paris"_s));
    QCOMPARE(annotation.subtitle, nodes.first()->smartName);
}

QTEST_GUILESS_MAIN(tst_CSVOutputOperation)
#include "tst_CSVOutputOperation.moc"
