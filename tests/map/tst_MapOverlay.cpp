#include "MapFixture.h"
#include "location/GPSCoordinateComponent.h"
#include "map/HeadlessMapView.h"
#include "map/MapDelegate.h"
#include "map/MapOverlay.h"
#include "session/DataModel.h"

#include "RecordingDoubles.h"
#include "TestSupport.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const MapViewState startState {{47.0, 8.0}, 12.0, 800.0, 600.0};

} // namespace

class tst_MapOverlay : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { TestSupport::useTemporaryUserDefaults(); }
    void init();
    void cleanup();
    void modesAndTheirFaces();
    void rubberBand_data();
    void rubberBand();
    void pinsWithinReach_data();
    void pinsWithinReach();
    void pointerModeDragsTheMapAndClicksSelect();
    void addPinGoesToTheWorkflow();

private:
    // A file whose marker stands at a point of the starting view.
    NodePtr fileAt(const QString &name, QPointF point);
    QStringList selectedNames() const;

    MapFixture m_files;
    std::unique_ptr<DataModel> m_model;
    std::unique_ptr<MapDelegate> m_delegate;
    std::unique_ptr<HeadlessMapView> m_view;
    std::unique_ptr<MapOverlay> m_overlay;
};

void tst_MapOverlay::init()
{
    m_model = std::make_unique<DataModel>();
    m_delegate = std::make_unique<MapDelegate>(*m_model);
    m_view = std::make_unique<HeadlessMapView>(startState);
    m_delegate->setMapView(m_view.get());
    m_overlay = std::make_unique<MapOverlay>(*m_model, *m_delegate);
    m_delegate->setOverlayModeSource([this] { return m_overlay->overlayMode(); });
    m_delegate->setupMapListeners();
}

void tst_MapOverlay::cleanup()
{
    QVERIFY(TestSupport::drainMainQueue());
    m_overlay.reset();
    m_delegate.reset();
    m_view.reset();
    m_model.reset();
}

NodePtr tst_MapOverlay::fileAt(const QString &name, QPointF point)
{
    const Coordinate2D place = MapGeometry::coordinateForPoint(startState, point);
    const NodePtr node = m_files.photo(name, place.latitude, place.longitude);
    m_delegate->addMarker(node);
    return node;
}

QStringList tst_MapOverlay::selectedNames() const
{
    QStringList names;
    for (const NodePtr &node : m_model->selectedNodes())
        names << node->name;
    return names;
}

void tst_MapOverlay::modesAndTheirFaces()
{
    QCOMPARE(m_overlay->overlayMode(), MapOverlayMode::areaFileSelector);
    const QList<std::pair<MapCursor, bool>> expected {
        {MapCursor::crosshair, true},           {MapCursor::arrow, false},
        {MapCursor::crosshair, true},           {MapCursor::pointingHand, true},
        {MapCursor::operationNotAllowed, true},
    };
    const NodePtr kept = fileAt(u"kept.jpg"_s, {400, 300});
    m_model->setSelectedNodes({kept});
    for (int mode = 0; mode < MapOverlayModeInfo::count; ++mode) {
        m_overlay->setOverlayMode(MapOverlayMode(mode));
        QCOMPARE(m_overlay->cursor(), expected.at(mode).first);
        QCOMPARE(m_overlay->takesMouse(), expected.at(mode).second);
        QVERIFY(!MapOverlayModeInfo::of(MapOverlayMode(mode)).toolTip.isEmpty());
    }
    // Changing modes leaves the selection alone.
    QCOMPARE(selectedNames(), QStringList {u"kept.jpg"_s});
    QCOMPARE(MapOverlayModeInfo::of(MapOverlayMode::deletePin).toolTip, u"Delete selected pin"_s);
}

void tst_MapOverlay::rubberBand_data()
{
    QTest::addColumn<QPointF>("from");
    QTest::addColumn<QPointF>("to");
    QTest::addColumn<QStringList>("selected");
    QTest::addColumn<MarkerTint>("clusterTint");
    // A cluster of three files around the centre, and one file apart.
    QTest::newRow("a click without a drag leaves the selection")
        << QPointF(100, 100) << QPointF(100, 100) << QStringList {u"apart.jpg"_s}
        << MarkerTint::clusterGray;
    QTest::newRow("a band over no marker empties the selection")
        << QPointF(10, 10) << QPointF(60, 60) << QStringList() << MarkerTint::clusterGray;
    QTest::newRow("a band over part of a cluster takes the files inside")
        << QPointF(415, 320) << QPointF(390, 280) << QStringList {u"one.jpg"_s, u"two.jpg"_s}
        << MarkerTint::partlyOrange;
    QTest::newRow("a band over everything")
        << QPointF(0, 0) << QPointF(800, 600)
        << QStringList {u"one.jpg"_s, u"two.jpg"_s, u"three.jpg"_s, u"apart.jpg"_s}
        << MarkerTint::selectedBlue;
}

void tst_MapOverlay::rubberBand()
{
    QFETCH(QPointF, from);
    QFETCH(QPointF, to);
    fileAt(u"one.jpg"_s, {400, 300});
    fileAt(u"two.jpg"_s, {410, 300});
    fileAt(u"three.jpg"_s, {425, 300});
    const NodePtr apart = fileAt(u"apart.jpg"_s, {700, 500});
    m_model->setSelectedNodes({apart});

    m_overlay->mouseDown(from);
    if (from != to) {
        m_overlay->mouseDragged((from + to) / 2);
        m_overlay->mouseDragged(to);
        QCOMPARE(m_overlay->selectionRect, std::optional(QRectF(from, to).normalized()));
    }
    m_overlay->mouseUp(to);
    QVERIFY(!m_overlay->selectionRect);
    QTEST(selectedNames(), "selected");
    const QList<MapSceneItem> items = m_delegate->scene().items;
    const auto cluster = std::find_if(items.cbegin(), items.cend(), [](const MapSceneItem &item) {
        return item.ref.kind == AnnotationKind::cluster;
    });
    QVERIFY(cluster != items.cend());
    QCOMPARE(cluster->count, 3u);
    QTEST(cluster->tint, "clusterTint");
}

void tst_MapOverlay::pinsWithinReach_data()
{
    QTest::addColumn<MapOverlayMode>("mode");
    QTest::addColumn<double>("distance");
    QTest::addColumn<int>("pinsLeft");
    QTest::addColumn<int>("currentPin");
    QTest::newRow("delete at 22 points") << MapOverlayMode::deletePin << 22.0 << 1 << 0;
    QTest::newRow("delete at 23 points does nothing")
        << MapOverlayMode::deletePin << 23.0 << 2 << 0;
    QTest::newRow("select at 22 points") << MapOverlayMode::selectPin << 22.0 << 2 << 1;
    QTest::newRow("select at 23 points does nothing")
        << MapOverlayMode::selectPin << 23.0 << 2 << 0;
}

void tst_MapOverlay::pinsWithinReach()
{
    QFETCH(MapOverlayMode, mode);
    QFETCH(double, distance);
    // The second pin stands at the view's centre, whose point is exact.
    const Coordinate2D first = MapGeometry::coordinateForPoint(startState, {200, 200});
    const Coordinate2D second = startState.center;
    m_model->_pins->setValue({Pin {u"Pin 1"_s, first.latitude, first.longitude, {}, {}, {}, {}},
                              Pin {u"Pin 2"_s, second.latitude, second.longitude, {}, {}, {}, {}}});
    m_model->setHasPins(true);
    m_delegate->syncPinAnnotations();
    m_model->setCurrentPinIndex(0);
    m_model->updateCurrentPinDisplay();
    m_overlay->setOverlayMode(mode);

    m_overlay->mouseDown({400 + distance, 300});
    m_overlay->mouseUp({400 + distance, 300});
    QTEST(int(m_model->_pins->ref().size()), "pinsLeft");
    QTEST(m_model->currentPinIndex(), "currentPin");
    if (mode == MapOverlayMode::selectPin && m_model->currentPinIndex() == 1) {
        QCOMPARE(m_model->_currentPinName->value(), u"Pin 2"_s);
        QCOMPARE(m_delegate->selectedAnnotations(),
                 (QList<AnnotationRef> {{AnnotationKind::pin, 1}}));
    }
}

void tst_MapOverlay::pointerModeDragsTheMapAndClicksSelect()
{
    const NodePtr file = fileAt(u"pointer.jpg"_s, {300, 300});
    m_overlay->setOverlayMode(MapOverlayMode::fileSelector);
    const Coordinate2D under = MapGeometry::coordinateForPoint(startState, {500, 400});
    m_overlay->mouseDown({500, 400});
    m_overlay->mouseDragged({520, 390});
    m_overlay->mouseDragged({540, 380});
    m_overlay->mouseUp({540, 380});
    // The place that was under the mouse has followed it.
    const QPointF moved = MapGeometry::pointForCoordinate(m_view->viewState(), under);
    QVERIFY(std::hypot(moved.x() - 540, moved.y() - 380) < 0.5);
    QVERIFY(m_model->selectedNodes().isEmpty());

    const QPointF marker = MapGeometry::pointForCoordinate(
        m_view->viewState(), m_delegate->markers().first().coordinate.value());
    m_overlay->mouseDown(marker - QPointF(0, 15));
    m_overlay->mouseUp(marker - QPointF(0, 15));
    QCOMPARE(m_model->selectedNodes(), QList<NodePtr> {file});
    // A click on empty map empties the selection.
    m_overlay->mouseDown({50, 550});
    m_overlay->mouseUp({50, 550});
    QVERIFY(m_model->selectedNodes().isEmpty());
}

void tst_MapOverlay::addPinGoesToTheWorkflow()
{
    RecordingPinWorkflow workflow;
    m_overlay->setOverlayMode(MapOverlayMode::addPin);
    m_overlay->mouseDown({100, 100});
    m_overlay->mouseUp({100, 100});
    QVERIFY(workflow.coordinates.isEmpty());
    m_overlay->setPinWorkflow(&workflow);
    m_overlay->mouseDown({100, 100});
    m_overlay->mouseUp({100, 100});
    QCOMPARE(workflow.coordinates,
             QList<Coordinate2D> {MapGeometry::coordinateForPoint(startState, {100, 100})});
    QVERIFY(!workflow.switched);
}

QTEST_GUILESS_MAIN(tst_MapOverlay)
#include "tst_MapOverlay.moc"
