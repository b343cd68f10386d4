#include "commons/ApplicationStart.h"
#include "location/GeotagController.h"

#include "Fixtures.h"
#include "TestSupport.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

// Keeps the failures the controller reports.
class RecordingView : public GeotagView
{
public:
    void geotagTrackChanged() override { }
    void geotagPreviewChanged() override { }
    void geotagFailed(const QString &message) override { failures << message; }
    void geotagApplyFinished(int, int) override { }
    QStringList failures;
};

// Two segments an hour apart; the first has a gap of 20 minutes (08:10 to 08:30).
const QByteArray track
    = "<?xml version='1.0' encoding='UTF-8'?>\n"
      "<gpx version='1.1' creator='tests' xmlns='http://www.topografix.com/GPX/1/1'><trk>\n"
      "<trkseg>\n"
      "<trkpt lat='48.0' lon='2.0'><ele>100</ele><time>2024-05-01T08:00:00Z</time></trkpt>\n"
      "<trkpt lat='48.1' lon='2.1'><ele>110</ele><time>2024-05-01T08:10:00Z</time></trkpt>\n"
      "<trkpt lat='48.3' lon='2.3'><ele>130</ele><time>2024-05-01T08:30:00Z</time></trkpt>\n"
      "</trkseg>\n"
      "<trkseg>\n"
      "<trkpt lat='49.0' lon='3.0'><time>2024-05-01T09:30:00Z</time></trkpt>\n"
      "<trkpt lat='49.1' lon='3.1'><time>2024-05-01T09:40:00Z</time></trkpt>\n"
      "</trkseg>\n"
      "</trk></gpx>\n";

} // namespace

class tst_GeotagController : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void preview_data();
    void preview();
    void clockOffsetFromPlacement();
    void malformedTrack_data();
    void malformedTrack();

private:
    NodePtr photo(const QString &name, const QStringList &tags);
    bool settle(GeotagController &controller);

    QTemporaryDir m_dir;
    QString m_track;
};

void tst_GeotagController::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    ApplicationStart::installMetadataReaders();
    m_track = Fixtures::makeFile(m_dir.path(), u"walk.gpx"_s, track);
}

NodePtr tst_GeotagController::photo(const QString &name, const QStringList &tags)
{
    const QString path = Fixtures::makeJpeg(m_dir.path(), name, tags);
    return path.isEmpty() ? nullptr : Fixtures::readNode(path);
}

bool tst_GeotagController::settle(GeotagController &controller)
{
    bool idle = false;
    controller.notifyWhenIdle([&idle] { idle = true; });
    return TestSupport::waitUntil([&] { return idle && !controller.isBusy(); }, 60000);
}

void tst_GeotagController::preview_data()
{
    QTest::addColumn<QStringList>("tags");
    QTest::addColumn<double>("cameraAheadSeconds");
    QTest::addColumn<int>("extrapolationMinutes");
    QTest::addColumn<QString>("expected"); // "lat lon" or the reason

    auto taken = [](const QString &time) {
        return QStringList {u"-DateTimeOriginal="_s + time};
    };
    // The session's zone is Paris (UTC+2 in May): 10:05 local is 08:05 UTC.
    QTest::newRow("inside a segment")
        << taken(u"2024:05:01 10:05:00"_s) << 0.0 << 0 << u"+48.050000 +2.050000"_s;
    QTest::newRow("gap smaller than the limit")
        << taken(u"2024:05:01 10:20:00"_s) << 0.0 << 0 << u"+48.200000 +2.200000"_s;
    QTest::newRow("gap larger than the limit, between segments")
        << taken(u"2024:05:01 10:55:00"_s) << 0.0 << 0 << u"in a gap of 60 minutes"_s;
    QTest::newRow("second segment")
        << taken(u"2024:05:01 11:35:00"_s) << 0.0 << 0 << u"+49.050000 +3.050000"_s;
    QTest::newRow("after the track")
        << taken(u"2024:05:01 12:00:00"_s) << 0.0 << 0 << u"after the track"_s;
    QTest::newRow("before the track, within the extrapolation")
        << taken(u"2024:05:01 09:30:00"_s) << 0.0 << 60 << u"+48.000000 +2.000000"_s;
    QTest::newRow("no capture time") << QStringList() << 0.0 << 0 << u"no capture time"_s;
    // The camera went to the Azores (UTC-1) and says so: its offset wins over the zone.
    QTest::newRow("camera changed time zone")
        << QStringList {u"-DateTimeOriginal=2024:05:01 08:35:00"_s, u"-OffsetTimeOriginal=-01:00"_s}
        << 0.0 << 0 << u"+49.050000 +3.050000"_s;
    QTest::newRow("camera clock 5 minutes fast, uncorrected")
        << taken(u"2024:05:01 10:10:00"_s) << 0.0 << 0 << u"+48.100000 +2.100000"_s;
}

void tst_GeotagController::preview()
{
    QFETCH(QStringList, tags);
    QFETCH(double, cameraAheadSeconds);
    QFETCH(int, extrapolationMinutes);
    QFETCH(QString, expected);

    const NodePtr node
        = photo(QString::fromLatin1(QTest::currentDataTag()).replace(u' ', u'-') + u".jpg"_s, tags);
    QVERIFY(node);
    RecordingView view;
    GeotagController controller;
    controller.setView(&view);
    controller.setTimeZone("Europe/Paris");
    controller.setCameraClockOffsetSeconds(cameraAheadSeconds);
    controller.setMaximumExtrapolationMinutes(extrapolationMinutes);
    controller.setFiles({node});
    controller.setTrackFiles({m_track});
    QVERIFY(settle(controller));

    QVERIFY(view.failures.isEmpty());
    QCOMPARE(controller.trackSegments().size(), 2);
    QCOMPARE(controller.preview().size(), 1);
    const GeotagController::Item &item = controller.preview().first();
    const QString got = item.placed() ? item.latitude + u' ' + item.longitude
                                      : GeotagController::reasonText(item);
    QCOMPARE(got, expected);
    QCOMPARE(controller.outsideItems().size(), item.placed() ? 0 : 1);
}

void tst_GeotagController::clockOffsetFromPlacement()
{
    // Taken at 08:05 UTC by the camera, but the user puts it where the track was at 08:10.
    const NodePtr node
        = photo(u"placed.jpg"_s,
                {u"-DateTimeOriginal=2024:05:01 08:05:00"_s, u"-OffsetTimeOriginal=+00:00"_s});
    QVERIFY(node);
    GeotagController controller;
    QVERIFY(!controller.setCameraClockOffsetFromPlacement(node, {48.1, 2.1}));
    controller.setFiles({node});
    controller.setTrackFiles({m_track});
    QVERIFY(settle(controller));
    QVERIFY(controller.setCameraClockOffsetFromPlacement(node, {48.1001, 2.0999}));
    QCOMPARE(controller.cameraClockOffsetSeconds(), -300.0);
    QVERIFY(settle(controller));
    QCOMPARE(controller.preview().first().latitude, u"+48.100000"_s);
}

void tst_GeotagController::malformedTrack_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("no points") << QByteArray("<?xml version=\"1.0\"?>\n<gpx></gpx>\n");
    QTest::newRow("not a track") << QByteArray("\x89PNG\r\n\x1a\n", 8);
}

void tst_GeotagController::malformedTrack()
{
    QFETCH(QByteArray, content);
    const QString path = Fixtures::makeFile(m_dir.path(), u"broken.gpx"_s, content);
    const NodePtr node = photo(u"for-broken.jpg"_s, {u"-DateTimeOriginal=2024:05:01 10:05:00"_s});
    RecordingView view;
    GeotagController controller;
    controller.setView(&view);
    controller.setFiles({node});
    controller.setTrackFiles({path});
    QVERIFY(settle(controller));
    QCOMPARE(view.failures.size(), 1);
    QVERIFY2(view.failures.first().startsWith(u"The track could not be read. broken.gpx: "_s),
             qPrintable(view.failures.first()));
    QVERIFY(!controller.hasTrack());
    QVERIFY(controller.preview().isEmpty());
    QCOMPARE(controller.apply(), 0);
}

QTEST_GUILESS_MAIN(tst_GeotagController)
#include "tst_GeotagController.moc"
