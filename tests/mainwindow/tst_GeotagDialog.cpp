#include "EditorTestBench.h"
#include "FileDialogs.h"
#include "Fixtures.h"
#include "TestSupport.h"
#include "bricks/controls/SmartTextField.h"
#include "mainwindow/GeotagDialog.h"
#include "mainwindow/MapWebView.h"
#include "mainwindow/editors/GPSLocationFragment.h"
#include "platform/UserDefaults.h"
#include "session/DataModel.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QWebEnginePage>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

// Two segments, a fix every ten minutes from 08:00 to 08:20 UTC and from 09:00 to 09:10; the
// 40 minutes between them are more than the largest gap, so the map draws two lines.
const QByteArray track
    = "<?xml version='1.0' encoding='UTF-8'?>\n"
      "<gpx version='1.1' creator='tests' xmlns='http://www.topografix.com/GPX/1/1'><trk><trkseg>\n"
      "<trkpt lat='48.0' lon='2.0'><time>2024-05-01T08:00:00Z</time></trkpt>\n"
      "<trkpt lat='48.1' lon='2.1'><time>2024-05-01T08:10:00Z</time></trkpt>\n"
      "<trkpt lat='48.2' lon='2.2'><time>2024-05-01T08:20:00Z</time></trkpt>\n"
      "</trkseg><trkseg>\n"
      "<trkpt lat='48.3' lon='2.3'><time>2024-05-01T09:00:00Z</time></trkpt>\n"
      "<trkpt lat='48.4' lon='2.4'><time>2024-05-01T09:10:00Z</time></trkpt>\n"
      "</trkseg></trk></gpx>\n";

QDir screenshotFolder()
{
    const QString folder = qEnvironmentVariable("PALOMET_SCREENSHOTS",
                                                QDir::temp().filePath(u"palomet-screenshots"_s));
    QDir().mkpath(folder);
    return QDir(folder);
}

QStringList column(const QTableView *table, int column)
{
    QStringList texts;
    for (int row = 0; row < table->model()->rowCount(); ++row)
        texts << table->model()->index(row, column).data().toString();
    return texts;
}

// What the map page's overlays hold: "segments" (vertices per line), "landings" ([lat, lon,
// name] each), "highlighted" and "highlightedRadius".
QVariantMap pageOverlays(MapWebView *map)
{
    const auto answer = std::make_shared<std::optional<QVariantMap>>();
    map->page()->runJavaScript(u"window.palometOverlays ? palometOverlays() : {}"_s,
                               [answer](const QVariant &value) { *answer = value.toMap(); });
    TestSupport::waitUntil([&] { return answer->has_value(); }, 20000);
    return answer->value_or(QVariantMap());
}

QPoint mapPoint(MapWebView *map, Coordinate2D coordinate)
{
    return MapGeometry::pointForCoordinate(map->viewState(), coordinate).toPoint();
}

} // namespace

class tst_GeotagDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        EditorTestBench::setUpOnce();
        // The dialog's map never reaches a tile server here.
        UserDefaults::standard().setObject(false, MapWebView::onlineSettingKey());
    }
    void malformedTrackIsExplained();
    void previewThenApplyWritesThePositions();

private:
    QTemporaryDir m_dir;
};

void tst_GeotagDialog::malformedTrackIsExplained()
{
    EditorTestBench bench;
    const NodePtr photo
        = bench.readJpeg(u"photo.jpg"_s, {u"-DateTimeOriginal=2024:05:01 08:05:00"_s});
    QVERIFY(photo);
    const QString broken = Fixtures::makeFile(
        m_dir.path(), u"broken.gpx"_s, "<?xml version=\"1.0\"?>\n<gpx><trk><trkseg><trkpt la");
    // Opened from the GPS editor's button, for the files the window hands it.
    QPointer<GeotagDialog> dialog;
    QWidget *editor
        = bench.show(GPSLocationFragment::directive(*bench.model().gpsCoordinateComponent, [&] {
              dialog = GeotagDialog::run(bench.view<QWidget>(u"gpsLocationFragment"_s), {photo});
          }));
    QVERIFY(editor);
    QVERIFY(editor->grab().save(screenshotFolder().filePath(u"geotag-gps-editor.png"_s)));
    QTest::mouseClick(bench.view<QWidget>(u"geotagFromTrackButton"_s), Qt::LeftButton);
    QVERIFY(dialog && QTest::qWaitForWindowExposed(dialog));
    QCOMPARE(dialog->controller().files(), QList<NodePtr> {photo});
    auto *error = dialog->findChild<QLabel *>(u"geotagError"_s);
    auto *apply = dialog->findChild<QPushButton *>(u"geotagApplyButton"_s);

    TestSupport::answerFileDialog(this, broken);
    QTest::mouseClick(dialog->findChild<QWidget *>(u"geotagChooseButton"_s), Qt::LeftButton);
    QVERIFY(TestSupport::waitUntil([&] { return error->isVisible(); }, 60000));
    QVERIFY2(error->text().startsWith(u"The track could not be read. broken.gpx: "_s),
             qPrintable(error->text()));
    QVERIFY(!apply->isEnabled());

    // A clock offset that is no time says so, and keeps Apply off.
    auto *clock = dialog->findChild<SmartTextField *>(u"geotagClockOffset"_s);
    clock->selectAll();
    QTest::keyClicks(clock, u"five"_s);
    QVERIFY(error->text().contains(u"\"five\""_s));
    QTest::keyClick(dialog, Qt::Key_Escape);
    QVERIFY(TestSupport::waitUntil([&] { return !dialog; }));
}

void tst_GeotagDialog::previewThenApplyWritesThePositions()
{
    EditorTestBench bench;
    const QString trackPath = Fixtures::makeFile(m_dir.path(), u"walk.gpx"_s, track);
    // Taken by a camera 5 minutes fast, in UTC: 08:10 and 08:20 are 08:05 and 08:15 on the track.
    const QStringList utc {u"-OffsetTimeOriginal=+00:00"_s};
    const QList<NodePtr> nodes {
        bench.readJpeg(u"early.jpg"_s,
                       QStringList {u"-DateTimeOriginal=2024:05:01 07:00:00"_s} + utc),
        bench.readJpeg(u"first.jpg"_s,
                       QStringList {u"-DateTimeOriginal=2024:05:01 08:10:00"_s} + utc),
        bench.readJpeg(u"second.jpg"_s,
                       QStringList {u"-DateTimeOriginal=2024:05:01 08:20:00"_s} + utc),
        bench.readJpeg(u"third.jpg"_s,
                       QStringList {u"-DateTimeOriginal=2024:05:01 09:10:00"_s} + utc)};
    for (const NodePtr &node : nodes)
        QVERIFY(node);

    QPointer<GeotagDialog> dialog = GeotagDialog::run(nullptr, nodes);
    QVERIFY(dialog && QTest::qWaitForWindowExposed(dialog));
    auto *table = dialog->findChild<QTableView *>(u"geotagList"_s);
    auto *apply = dialog->findChild<QPushButton *>(u"geotagApplyButton"_s);
    auto *summary = dialog->findChild<QLabel *>(u"geotagSummary"_s);
    QCOMPARE(table->model()->rowCount(), 4);
    QVERIFY(!apply->isEnabled());

    auto *clock = dialog->findChild<SmartTextField *>(u"geotagClockOffset"_s);
    clock->setFocus();
    clock->selectAll();
    QTest::keyClicks(clock, u"5:00"_s);
    QCOMPARE(dialog->controller().cameraClockOffsetSeconds(), 300.0);

    TestSupport::answerFileDialog(this, trackPath);
    QTest::mouseClick(dialog->findChild<QWidget *>(u"geotagChooseButton"_s), Qt::LeftButton);
    QVERIFY(TestSupport::waitUntil([&] { return apply->isEnabled(); }, 60000));
    QCOMPARE(summary->text(), u"3 of 4 files would be placed; 1 is left outside the track."_s);
    const QStringList positions {u"before the track"_s, u"+48.050000, +2.050000"_s,
                                 u"+48.150000, +2.150000"_s, u"+48.350000, +2.350000"_s};
    QCOMPARE(column(table, GeotagDialog::positionColumn), positions);

    // The map draws both segments of the track and a dot where each placed file lands.
    MapWebView *map = dialog->mapView();
    QVariantMap overlays;
    QVERIFY(TestSupport::waitUntil(
        [&] {
            overlays = pageOverlays(map);
            return overlays.value(u"landings"_s).toList().size() == 3;
        },
        30000));
    QCOMPARE(overlays.value(u"segments"_s).toList(), (QVariantList {3, 2}));
    const QVariantList landings = overlays.value(u"landings"_s).toList();
    for (int i = 0; i < 3; ++i) {
        const QVariantList landing = landings[i].toList();
        const QStringList expected = positions[i + 1].split(u", "_s);
        QCOMPARE(QString::asprintf("%+.6f", landing[0].toDouble()), expected[0]);
        QCOMPARE(QString::asprintf("%+.6f", landing[1].toDouble()), expected[1]);
        QCOMPARE(landing[2].toString(), column(table, GeotagDialog::fileColumn)[i + 1]);
    }
    // The map was fitted to the track: every landing point is in sight.
    QVERIFY(TestSupport::waitUntil([&] { return map->viewState().zoom > 8.0; }, 20000));
    for (const GeotagMapContent::Landing &landing : dialog->mapContent().landings())
        QVERIFY(
            QRect(0, 0, map->width(), map->height()).contains(mapPoint(map, landing.coordinate)));

    // The zoom buttons step the map; a click while the last step is still animating counts too:
    // the page ends on one level more, then back on the fitted one.
    const double fitted = map->viewState().zoom;
    const auto zoomLevels = [&](const QString &kind) {
        QList<double> zooms;
        for (const QVariant &zoom : pageOverlays(map).value(kind).toList())
            zooms << zoom.toDouble();
        return zooms;
    };
    const auto zoomEnds = [&] {
        return zoomLevels(u"zoomEnds"_s);
    };
    const qsizetype startsBefore = zoomLevels(u"zoomStarts"_s).size();
    const qsizetype zoomsBefore = zoomEnds().size();
    QTest::mouseClick(map->findChild<QToolButton *>(u"zoomInButton"_s), Qt::LeftButton);
    QVERIFY(TestSupport::waitUntil(
        [&] { return zoomLevels(u"zoomStarts"_s).size() > startsBefore; }, 10000));
    QTest::mouseClick(map->findChild<QToolButton *>(u"zoomOutButton"_s), Qt::LeftButton);
    QList<double> zooms;
    const bool stepped = TestSupport::waitUntil(
        [&] {
            zooms = zoomEnds().mid(zoomsBefore);
            return zooms.size() >= 2 && std::fabs(map->viewState().zoom - fitted) < 0.01;
        },
        30000);
    const auto listed = [](const QList<double> &levels) {
        QStringList texts;
        for (double level : levels)
            texts << QString::number(level);
        return texts.join(u' ');
    };
    QVERIFY2(stepped,
             qPrintable(u"fitted %1, shown %2, zoom steps started: %3; ended: %4"_s.arg(fitted)
                            .arg(map->viewState().zoom)
                            .arg(listed(zoomLevels(u"zoomStarts"_s)), listed(zoomEnds()))));
    QCOMPARE(zooms.size(), 2);
    QVERIFY(std::fabs(zooms[0] - (fitted + 1.0)) < 0.01);
    QVERIFY(std::fabs(zooms[1] - fitted) < 0.01);

    // A row highlights its dot; a click on a dot selects its row.
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                      table->visualRect(table->model()->index(2, 0)).center());
    QVERIFY(TestSupport::waitUntil([&] {
        overlays = pageOverlays(map);
        return overlays.value(u"highlighted"_s).toInt() == 1;
    }));
    QCOMPARE(overlays.value(u"highlightedRadius"_s).toDouble(), 8.0);
    QTest::mouseClick(map->focusProxy(), Qt::LeftButton, {},
                      mapPoint(map, dialog->mapContent().landings()[2].coordinate));
    QVERIFY(TestSupport::waitUntil([&] { return table->currentIndex().row() == 3; }));

    // "This photo was taken here": third.jpg (09:10 by the camera) placed on the fix of 09:00
    // makes the camera 10 minutes fast.
    auto *place = dialog->findChild<QPushButton *>(u"geotagPlaceButton"_s);
    QVERIFY(place->isEnabled());
    QTest::mouseClick(place, Qt::LeftButton);
    QVERIFY(dialog->isPlacing());
    QVERIFY(dialog->findChild<QLabel *>(u"geotagMapHint"_s)->text().contains(u"third.jpg"_s));
    QTest::mouseClick(map->focusProxy(), Qt::LeftButton, {}, mapPoint(map, {48.3, 2.3}));
    QVERIFY(TestSupport::waitUntil([&] { return clock->text() == u"10:00"_s; }));
    QVERIFY(!dialog->isPlacing());
    QCOMPARE(dialog->controller().cameraClockOffsetSeconds(), 600.0);
    clock->setFocus();
    clock->selectAll();
    QTest::keyClicks(clock, u"5:00"_s);
    QVERIFY(TestSupport::waitUntil(
        [&] {
            return !dialog->controller().isBusy()
                && column(table, GeotagDialog::positionColumn) == positions;
        },
        60000));

    // The list of files left outside; the selected third.jpg leaves it, and its dot goes plain.
    QTest::mouseClick(dialog->findChild<QCheckBox *>(u"geotagOnlyOutside"_s), Qt::LeftButton);
    QCOMPARE(column(table, GeotagDialog::positionColumn), QStringList {u"before the track"_s});
    QVERIFY(TestSupport::waitUntil(
        [&] { return pageOverlays(map).value(u"highlighted"_s).toInt() == -1; }));

    const QPalette light = QApplication::palette();
    QTest::mouseClick(dialog->findChild<QCheckBox *>(u"geotagOnlyOutside"_s), Qt::LeftButton);
    table->selectRow(2);
    for (const QString &theme : {u"light"_s, u"dark"_s}) {
        QApplication::setPalette(theme == u"dark"_s ? EditorTestBench::darkPalette() : light);
        // A few frames for the page to take the theme.
        QTest::qWait(600);
        QVERIFY(
            dialog->grab().save(screenshotFolder().filePath(u"geotag-dialog-%1.png"_s.arg(theme))));
    }
    QApplication::setPalette(light);

    QTest::mouseClick(apply, Qt::LeftButton);
    QVERIFY(TestSupport::waitUntil(
        [&] { return summary->text() == u"3 files geotagged, 0 failed."_s; }, 60000));
    QVERIFY(bench.waitForWrites());
    QCOMPARE(dialog->findChild<QPushButton *>(u"geotagCloseButton"_s)->text(), u"Close"_s);
    QVERIFY(!apply->isEnabled());

    QCOMPARE(EditorTestBench::tagInFile(nodes[0]->absolutePath, u"GPSLatitude"_s), QString());
    QCOMPARE(EditorTestBench::tagInFile(nodes[1]->absolutePath, u"GPSLatitude"_s), u"48.05"_s);
    QCOMPARE(EditorTestBench::tagInFile(nodes[1]->absolutePath, u"GPSLongitude"_s), u"2.05"_s);
    QCOMPARE(EditorTestBench::tagInFile(nodes[2]->absolutePath, u"GPSLatitude"_s), u"48.15"_s);
    QCOMPARE(EditorTestBench::tagInFile(nodes[3]->absolutePath, u"GPSLatitude"_s), u"48.35"_s);
    QVERIFY(bench.alerts.alerts.isEmpty());
    dialog->close();
    QVERIFY(TestSupport::waitUntil([&] { return !dialog; }));
}

// The web engine wants its settings before the application object exists.
static void prepareWebEngine()
{
    MapWebView::prepareProcess();
}
Q_CONSTRUCTOR_FUNCTION(prepareWebEngine)

QTEST_MAIN(tst_GeotagDialog)
#include "tst_GeotagDialog.moc"
