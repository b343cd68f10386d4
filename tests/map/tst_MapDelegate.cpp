#include "MapFixture.h"
#include "commons/ApplicationStart.h"
#include "map/HeadlessMapView.h"
#include "map/MapDelegate.h"
#include "platform/MainQueue.h"
#include "session/DataModel.h"

#include "Fixtures.h"
#include "RecordingDoubles.h"
#include "TestSupport.h"

#include <QTest>

#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const Coordinate2D zurich {47.3769, 8.5417};

} // namespace

class tst_MapDelegate : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void markerPlaces_data();
    void markerPlaces();
    void markersOfFilesReadByExifTool();
    void aReReadReplacesOnlyItsOwnMarker();
    void clicks_data();
    void clicks();
    void theEchoOfAClusterClickIsDropped();
    void clusterTintsFollowTheSelection();
    void selectionGuards_data();
    void selectionGuards();
    void pinsFollowTheModel();
    void adjustingTheMapShowsTheNodes();

private:
    // Clicks the first item of the kind in the current scene, as the page reports a click.
    bool clickFirst(AnnotationKind kind);

    MapFixture m_files;
    RecordingMainContentView m_mainView;
    std::unique_ptr<DataModel> m_model;
    std::unique_ptr<MapDelegate> m_delegate;
    std::unique_ptr<HeadlessMapView> m_view;
    MapOverlayMode m_mode = MapOverlayMode::fileSelector;
    std::chrono::steady_clock::time_point m_now {};
    int m_fileNumber = 0;
};

void tst_MapDelegate::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
}

void tst_MapDelegate::init()
{
    m_mainView.calls.clear();
    m_mainView.fromTable = false;
    m_mainView.shownTab = PreviewTab::map;
    MainContentViewing::install(&m_mainView);
    m_model = std::make_unique<DataModel>();
    m_delegate = std::make_unique<MapDelegate>(*m_model);
    m_view = std::make_unique<HeadlessMapView>(MapViewState {zurich, 10.0, 800.0, 600.0});
    m_delegate->setMapView(m_view.get());
    m_mode = MapOverlayMode::fileSelector;
    m_delegate->setOverlayModeSource([this] { return m_mode; });
    m_delegate->setClock([this] { return m_now; });
    m_delegate->setupMapListeners();
}

void tst_MapDelegate::cleanup()
{
    QVERIFY(TestSupport::drainMainQueue());
    m_delegate.reset();
    m_view.reset();
    m_model.reset();
    MainContentViewing::install(nullptr);
}

bool tst_MapDelegate::clickFirst(AnnotationKind kind)
{
    for (const MapSceneItem &item : m_delegate->scene().items) {
        if (item.ref.kind != kind)
            continue;
        const QPointF tip = MapGeometry::pointForCoordinate(m_view->viewState(), item.coordinate);
        // Into the balloon, above its tip.
        m_delegate->viewClicked(tip - QPointF(0.0, 20.0));
        return true;
    }
    return false;
}

void tst_MapDelegate::markerPlaces_data()
{
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QStringList>("keysAndValues");
    QTest::addColumn<std::optional<Coordinate2D>>("expected");
    QTest::newRow("photo south and west")
        << u"jpg"_s
        << QStringList {u"GPSLatitude#"_s,   u"33.8688"_s, u"GPSLongitude#"_s,   u"70.5"_s,
                        u"GPSLatitudeRef"_s, u"South"_s,   u"GPSLongitudeRef"_s, u"West"_s}
        << std::optional(Coordinate2D {-33.8688, -70.5});
    QTest::newRow("photo without references counts as north and east")
        << u"jpg"_s << QStringList {u"GPSLatitude#"_s, u"12.5"_s, u"GPSLongitude#"_s, u"3.25"_s}
        << std::optional(Coordinate2D {12.5, 3.25});
    QTest::newRow("an odd reference gives no marker")
        << u"jpg"_s << QStringList {u"GPSLatitude#"_s, u"12.5"_s,           u"GPSLongitude#"_s,
                                    u"3.25"_s,         u"GPSLatitudeRef"_s, u"Q"_s}
        << std::optional<Coordinate2D>();
    QTest::newRow("movie: signed, references not read")
        << u"MOV"_s << QStringList {u"GPSLatitude#"_s, u"-22.95"_s,         u"GPSLongitude#"_s,
                                    u"-43.21"_s,       u"GPSLatitudeRef"_s, u"North"_s}
        << std::optional(Coordinate2D {-22.95, -43.21});
}

void tst_MapDelegate::markerPlaces()
{
    QFETCH(QString, extension);
    QFETCH(QStringList, keysAndValues);
    QFETCH(std::optional<Coordinate2D>, expected);
    const NodePtr node = m_files.file(u"place%1.%2"_s.arg(++m_fileNumber).arg(extension));
    for (qsizetype i = 0; i + 1 < keysAndValues.size(); i += 2)
        m_files.store(node, keysAndValues.at(i), keysAndValues.at(i + 1));
    QCOMPARE(MapDelegate::markerCoordinate(*node), expected);

    m_delegate->addMarker(node);
    QCOMPARE(m_delegate->markerCount(), 1);
    // A file without a place keeps its marker, which the map does not show.
    m_view->setViewState({expected.value_or(zurich), 8.0, 800.0, 600.0}, false);
    m_delegate->viewStateDidChange(m_view->viewState());
    QCOMPARE(m_delegate->scene().items.size(), expected ? 1 : 0);
}

void tst_MapDelegate::markersOfFilesReadByExifTool()
{
    ApplicationStart::installMetadataReaders();
    m_delegate->install();
    const QString photo
        = Fixtures::makeJpeg(m_files.path(), u"south.jpg"_s,
                             {u"-GPSLatitude=33.8688"_s, u"-GPSLatitudeRef=S"_s,
                              u"-GPSLongitude=151.2093"_s, u"-GPSLongitudeRef=E"_s});
    const QString movie = Fixtures::makeVideo(m_files.path(), u"rio.mp4"_s);
    QVERIFY(Fixtures::writeTags(movie, {u"-Keys:GPSCoordinates=-22.95, -43.21, 0"_s}));
    const QString none = Fixtures::makeJpeg(m_files.path(), u"none.jpg"_s);
    for (const QString &path : {photo, movie, none})
        QVERIFY(Fixtures::readNode(path));
    m_delegate->uninstall();
    QVERIFY(TestSupport::drainMainQueue());

    QMap<QString, Coordinate2D> places;
    for (const MapDelegate::Marker &marker : m_delegate->markers())
        places.insert(marker.node->name, marker.coordinate.value());
    QCOMPARE(places.keys(), (QStringList {u"rio.mp4"_s, u"south.jpg"_s}));
    QVERIFY(std::fabs(places[u"south.jpg"_s].latitude + 33.8688) < 1e-6);
    QVERIFY(std::fabs(places[u"rio.mp4"_s].longitude + 43.21) < 1e-4);
}

void tst_MapDelegate::aReReadReplacesOnlyItsOwnMarker()
{
    const NodePtr first = m_files.photo(u"first.jpg"_s, 47.0, 8.0);
    const NodePtr second = m_files.photo(u"second.jpg"_s, 47.1, 8.1);
    // The readers hand markers over from their own thread.
    std::thread reader([&] {
        m_delegate->addMarker(first);
        m_delegate->addMarker(second);
    });
    reader.join();
    QVERIFY(TestSupport::waitUntil([&] { return m_delegate->markerCount() == 2; }));

    m_files.store(first, u"GPSLatitude#"_s, u"46.5"_s);
    m_delegate->removeMediaFileMarker(first->absolutePath);
    QCOMPARE(m_delegate->markerCount(), 1);
    m_delegate->addMarker(first);
    const QList<MapDelegate::Marker> markers = m_delegate->markers();
    QCOMPARE(markers.size(), 2);
    // The re-read file comes last, at its new place; the other file keeps its marker.
    QCOMPARE(markers.first().node, second);
    QCOMPARE(markers.last().coordinate->latitude, 46.5);

    Pin pin {u"Pin 1"_s, 47.0, 8.0, {}, {}, {}, {}};
    m_model->_pins->setValue({pin});
    m_delegate->addPointAnnotation({47.0, 8.0, u"Zürich"_s, u"first.jpg"_s});
    QVERIFY(TestSupport::drainMainQueue());
    m_delegate->removeAllMediaFileMarkers();
    QCOMPARE(m_delegate->markerCount(), 0);
    QCOMPARE(m_delegate->pinMarkers().size(), 1);
    QCOMPARE(m_delegate->pointAnnotations().size(), 1);
    m_delegate->removeAllPointAnnotations();
    QCOMPARE(m_delegate->pointAnnotations().size(), 0);
}

void tst_MapDelegate::clicks_data()
{
    QTest::addColumn<MapOverlayMode>("mode");
    QTest::addColumn<AnnotationKind>("clicked");
    QTest::addColumn<QStringList>("selected");
    QTest::addColumn<bool>("zooms");
    QTest::addColumn<int>("currentPin");
    const auto pointer = MapOverlayMode::fileSelector;
    QTest::newRow("cluster of one place selects its files")
        << pointer << AnnotationKind::cluster << QStringList {u"a.jpg"_s, u"b.jpg"_s} << false << 0;
    QTest::newRow("file marker selects its file")
        << pointer << AnnotationKind::mediaFile << QStringList {u"far.jpg"_s} << false << 0;
    QTest::newRow("pin marker becomes current")
        << pointer << AnnotationKind::pin << QStringList() << false << 1;
    QTest::newRow("rubber band mode: a file click selects nothing")
        << MapOverlayMode::areaFileSelector << AnnotationKind::mediaFile << QStringList() << false
        << 0;
    QTest::newRow("delete pin mode: a pin click still makes it current")
        << MapOverlayMode::deletePin << AnnotationKind::pin << QStringList() << false << 1;
}

void tst_MapDelegate::clicks()
{
    QFETCH(MapOverlayMode, mode);
    QFETCH(AnnotationKind, clicked);
    QFETCH(QStringList, selected);
    QFETCH(int, currentPin);
    // Two files at one place, one far away, and two pins elsewhere.
    for (const QString &name : {u"a.jpg"_s, u"b.jpg"_s})
        m_delegate->addMarker(m_files.photo(name, zurich.latitude, zurich.longitude));
    m_delegate->addMarker(m_files.photo(u"far.jpg"_s, 47.2, 8.9));
    m_model->_pins->setValue(
        {Pin {u"Pin 1"_s, 47.5, 8.3, {}, {}, {}, {}}, Pin {u"Pin 2"_s, 47.6, 8.7, {}, {}, {}, {}}});
    QVERIFY(TestSupport::drainMainQueue());
    m_model->setCurrentPinIndex(0);
    m_mode = mode;

    if (clicked == AnnotationKind::pin) {
        // The second pin.
        const QPointF tip = MapGeometry::pointForCoordinate(m_view->viewState(), {47.6, 8.7});
        m_delegate->viewClicked(tip - QPointF(0.0, 20.0));
    } else {
        QVERIFY(clickFirst(clicked));
    }
    QStringList names;
    for (const NodePtr &node : m_model->selectedNodes())
        names << node->name;
    QCOMPARE(names, selected);
    // A selection made on the map goes to the tables.
    QCOMPARE(m_mainView.count(u"selectRowsAccordingToCurrentSelectionVariables"_s),
             selected.isEmpty() ? 0 : 1);
    QCOMPARE(m_model->currentPinIndex(), currentPin);
    QCOMPARE(m_view->cameraChanges(), 0);
}

void tst_MapDelegate::theEchoOfAClusterClickIsDropped()
{
    const NodePtr a = m_files.photo(u"echo-a.jpg"_s, zurich.latitude, zurich.longitude);
    const NodePtr b = m_files.photo(u"echo-b.jpg"_s, zurich.latitude, zurich.longitude);
    m_delegate->addMarker(a);
    m_delegate->addMarker(b);
    QVERIFY(clickFirst(AnnotationKind::cluster));
    QCOMPARE(m_model->selectedNodes().size(), 2);
    QVERIFY(m_delegate->lastClusterSelectionTime.has_value());

    // The member selected right after the cluster is the platform's echo.
    const qint64 firstId = 0;
    m_now += 400ms;
    m_delegate->selectAnnotation({AnnotationKind::mediaFile, firstId}, false);
    QCOMPARE(m_model->selectedNodes().size(), 2);
    QVERIFY(m_delegate->selectedAnnotations().isEmpty());
    // Later, a click on a member is the user's.
    m_now += 200ms;
    m_delegate->selectAnnotation({AnnotationKind::mediaFile, firstId}, false);
    QCOMPARE(m_model->selectedNodes(), QList<NodePtr> {a});
}

void tst_MapDelegate::clusterTintsFollowTheSelection()
{
    const NodePtr a = m_files.photo(u"tint-a.jpg"_s, zurich.latitude, zurich.longitude);
    const NodePtr b = m_files.photo(u"tint-b.jpg"_s, zurich.latitude + 0.001, zurich.longitude);
    const NodePtr c = m_files.photo(u"tint-c.jpg"_s, 40.0, 8.0);
    for (const NodePtr &node : {a, b, c})
        m_delegate->addMarker(node);
    const auto tints = [&] {
        QList<MarkerTint> result;
        for (const MapSceneItem &item : m_delegate->scene().items)
            result << item.tint;
        return result;
    };
    m_view->setViewState({zurich, 6.0, 800.0, 1600.0}, false);
    m_delegate->viewStateDidChange(m_view->viewState());
    QCOMPARE(m_delegate->scene().items.size(), 2);
    QCOMPARE(tints(), (QList<MarkerTint> {MarkerTint::clusterGray, MarkerTint::unselectedGray}));
    m_model->setSelectedNodes({b, c});
    QCOMPARE(tints(), (QList<MarkerTint> {MarkerTint::partlyOrange, MarkerTint::selectedBlue}));
    m_model->setSelectedNodes({a, b});
    QCOMPARE(tints(), (QList<MarkerTint> {MarkerTint::selectedBlue, MarkerTint::unselectedGray}));
    QVERIFY(TestSupport::drainMainQueue());
    // The view got the last scene.
    QCOMPARE(m_view->lastScene().sequence, m_delegate->scene().sequence);
}

void tst_MapDelegate::selectionGuards_data()
{
    QTest::addColumn<bool>("fromTable");
    QTest::addColumn<PreviewTab>("tab");
    QTest::addColumn<bool>("empty");
    QTest::addColumn<int>("cameraChanges");
    QTest::addColumn<int>("scrolls");
    QTest::newRow("from the table with the map alone: colours only")
        << true << PreviewTab::map << false << 0 << 0;
    QTest::newRow("from the table beside the map: the map shows the files")
        << true << PreviewTab::vertical << false << 1 << 0;
    QTest::newRow("from the table, nothing selected: the map stays")
        << true << PreviewTab::combinedHorizontal << true << 0 << 0;
    QTest::newRow("from elsewhere with the table shown: it scrolls")
        << false << PreviewTab::items << false << 0 << 1;
    QTest::newRow("from elsewhere beside the map: the table scrolls, the map stays")
        << false << PreviewTab::combinedHorizontal << false << 0 << 1;
    QTest::newRow("from elsewhere with the map alone: nothing to scroll")
        << false << PreviewTab::map << false << 0 << 0;
}

void tst_MapDelegate::selectionGuards()
{
    QFETCH(bool, fromTable);
    QFETCH(PreviewTab, tab);
    QFETCH(bool, empty);
    const NodePtr first = m_files.photo(u"guard-1.jpg"_s, 46.2, 6.1);
    const NodePtr second = m_files.photo(u"guard-2.jpg"_s, 46.5, 6.6);
    m_delegate->addMarker(first);
    m_delegate->addMarker(second);
    m_mainView.shownTab = tab;
    m_mainView.calls.clear();

    // As the table's handler does: the flag, the selection, and a block that clears the flag.
    if (fromTable)
        m_mainView.setSelectionChangedFromTable(true);
    const QList<NodePtr> selection = empty ? QList<NodePtr>() : QList<NodePtr> {first, second};
    m_model->setSelectedNodes(selection);
    if (fromTable)
        MainQueue::post([this] { m_mainView.setSelectionChangedFromTable(false); });
    QVERIFY(TestSupport::drainMainQueue());

    QTEST(m_view->cameraChanges(), "cameraChanges");
    QTEST(m_mainView.count(u"scrollToFirstSelectedItemIfNeeded"_s), "scrolls");
    QCOMPARE(m_mainView.count(u"selectRowsAccordingToCurrentSelectionVariables"_s), 0);
    // The map selected the first file's marker without taking it for a click.
    QCOMPARE(m_model->selectedNodes(), selection);
    QCOMPARE(m_delegate->selectedAnnotations().isEmpty(), empty);
    QVERIFY(!m_delegate->isProgrammaticallySyncingSelection);
}

void tst_MapDelegate::pinsFollowTheModel()
{
    m_model->_pins->setValue(
        {Pin {u"Pin 1"_s, 47.5, 8.3, {}, {}, {}, {}}, Pin {u"Pin 2"_s, 47.6, 8.7, {}, {}, {}, {}}});
    m_model->setCurrentPinIndex(1);
    // The markers follow on the main queue, and select themselves once on the turn after.
    QVERIFY(TestSupport::drainMainQueue());
    QVERIFY(TestSupport::drainMainQueue());
    QCOMPARE(m_delegate->pinMarkers().size(), 2);
    // Each new pin's marker is selected once, as a click would, which makes it current.
    QCOMPARE(m_model->currentPinIndex(), 1);
    QList<MarkerTint> tints;
    for (const MapSceneItem &item : m_delegate->scene().items)
        tints << item.tint;
    QCOMPARE(tints, (QList<MarkerTint> {MarkerTint::partlyOrange, MarkerTint::selectedBlue}));

    m_model->_pins->setValue({Pin {u"Moved"_s, 46.0, 7.0, {}, {}, {}, {}}});
    QVERIFY(TestSupport::drainMainQueue());
    QCOMPARE(m_delegate->pinMarkers().size(), 1);
    QCOMPARE(m_delegate->pinMarkers().first().title, u"Moved"_s);
    QCOMPARE(m_delegate->coordinateOf({AnnotationKind::pin, 0}),
             std::optional(Coordinate2D {46.0, 7.0}));
}

void tst_MapDelegate::adjustingTheMapShowsTheNodes()
{
    const NodePtr a = m_files.photo(u"box-a.jpg"_s, 47.0, 8.0);
    const NodePtr b = m_files.photo(u"box-b.jpg"_s, 47.4, 8.1);
    const NodePtr none = m_files.file(u"box-none.jpg"_s);
    m_delegate->adjustMapToShowNodes({a, b, none});
    QCOMPARE(m_view->cameraChanges(), 1);
    QVERIFY(m_view->lastChangeAnimated());
    const CoordinateRegion shown = MapGeometry::region(m_view->viewState());
    QVERIFY(std::fabs(m_view->viewState().center.latitude - 47.2) < 1e-9);
    QVERIFY(std::fabs(m_view->viewState().center.longitude - 8.05) < 1e-9);
    // 1.3 times the box, each side at least 0.01 degrees: the height of 0.52 decides.
    QVERIFY(std::fabs(shown.latitudeDelta - 0.52) < 1e-3);
    QVERIFY(shown.longitudeDelta >= 0.13);

    m_delegate->adjustMapToShowNodes({none});
    QCOMPARE(m_view->cameraChanges(), 1);
}

QTEST_GUILESS_MAIN(tst_MapDelegate)
#include "tst_MapDelegate.moc"
