#include "map/MapGeometry.h"

#include <QTest>

#include <cmath>

class tst_MapGeometry : public QObject
{
    Q_OBJECT

private slots:
    void knownPoints_data();
    void knownPoints();
    void pointsAndCoordinatesRoundTrip_data();
    void pointsAndCoordinatesRoundTrip();
    void regionFitsTheView_data();
    void regionFitsTheView();
    void zoomKeepsThePlaceUnderThePointer();
};

void tst_MapGeometry::knownPoints_data()
{
    QTest::addColumn<MapViewState>("state");
    QTest::addColumn<Coordinate2D>("coordinate");
    QTest::addColumn<QPointF>("point");
    const MapViewState world {{0.0, 0.0}, 0.0, 256.0, 256.0};
    QTest::newRow("centre") << world << Coordinate2D {0.0, 0.0} << QPointF(128.0, 128.0);
    QTest::newRow("north-west corner of the world")
        << world << Coordinate2D {MapGeometry::maximumLatitude, -180.0} << QPointF(0.0, 0.0);
    QTest::newRow("latitudes beyond the square are clamped")
        << world << Coordinate2D {89.9, 0.0} << QPointF(128.0, 0.0);
    // Zoom 1 doubles the world; a quarter turn east is a quarter of 512 points.
    QTest::newRow("zoom doubles") << MapViewState {{0.0, 0.0}, 1.0, 100.0, 100.0}
                                  << Coordinate2D {0.0, 90.0} << QPointF(178.0, 50.0);
    QTest::newRow("across the antimeridian, next to the centre")
        << MapViewState {{0.0, 179.0}, 3.0, 400.0, 400.0} << Coordinate2D {0.0, -179.0}
        << QPointF(200.0 + 2.0 / 360.0 * 2048.0, 200.0);
}

void tst_MapGeometry::knownPoints()
{
    QFETCH(MapViewState, state);
    QFETCH(Coordinate2D, coordinate);
    QFETCH(QPointF, point);
    const QPointF found = MapGeometry::pointForCoordinate(state, coordinate);
    QVERIFY2(std::hypot(found.x() - point.x(), found.y() - point.y()) < 1e-6,
             qPrintable(QString::number(found.x()) + u',' + QString::number(found.y())));
}

void tst_MapGeometry::pointsAndCoordinatesRoundTrip_data()
{
    QTest::addColumn<MapViewState>("state");
    QTest::newRow("Europe") << MapViewState {{48.85, 2.29}, 5.5, 1024.0, 700.0};
    QTest::newRow("street level in the south")
        << MapViewState {{-33.86, 151.21}, 18.0, 640.0, 480.0};
    // Narrower than the world, which is 512 points wide at zoom 1.
    QTest::newRow("whole world") << MapViewState {{0.0, 0.0}, 1.0, 500.0, 500.0};
}

void tst_MapGeometry::pointsAndCoordinatesRoundTrip()
{
    QFETCH(MapViewState, state);
    for (const QPointF point : {QPointF(0, 0), QPointF(13.5, 400.25), QPointF(state.width, 1)}) {
        const Coordinate2D coordinate = MapGeometry::coordinateForPoint(state, point);
        const QPointF back = MapGeometry::pointForCoordinate(state, coordinate);
        QVERIFY(std::hypot(back.x() - point.x(), back.y() - point.y()) < 1e-6);
    }
}

void tst_MapGeometry::regionFitsTheView_data()
{
    QTest::addColumn<CoordinateRegion>("region");
    QTest::addColumn<double>("expectedZoom");
    // 0.01 degrees of longitude in 800 points: log2(800 * 360 / (256 * 0.01)).
    QTest::newRow("a pin's span") << CoordinateRegion {{48.8584, 2.2945}, 0.01, 0.01}
                                  << std::log2(800.0 * 360.0 / (256.0 * 0.01)) - 0.8;
    QTest::newRow("nothing wide: the closest zoom")
        << CoordinateRegion {{10.0, 10.0}, 0.0, 0.0} << MapGeometry::maximumZoom;
    QTest::newRow("more than the world: the farthest zoom")
        << CoordinateRegion {{0.0, 0.0}, 170.0, 720.0} << MapGeometry::minimumZoom;
}

void tst_MapGeometry::regionFitsTheView()
{
    QFETCH(CoordinateRegion, region);
    QFETCH(double, expectedZoom);
    const MapViewState view {{0.0, 0.0}, 3.0, 800.0, 600.0};
    const MapViewState state = MapGeometry::stateShowing(view, region);
    QCOMPARE(state.center, region.center);
    QCOMPARE(state.width, view.width);
    if (expectedZoom == MapGeometry::maximumZoom || expectedZoom == MapGeometry::minimumZoom) {
        QCOMPARE(state.zoom, expectedZoom);
        return;
    }
    // The region fits, and one of its spans fills the view.
    const CoordinateRegion shown = MapGeometry::region(state);
    QVERIFY(shown.longitudeDelta >= region.longitudeDelta - 1e-9);
    QVERIFY(shown.latitudeDelta >= region.latitudeDelta - 1e-9);
    QVERIFY(std::fabs(shown.longitudeDelta - region.longitudeDelta) < 1e-9
            || std::fabs(shown.latitudeDelta - region.latitudeDelta) < 1e-9);
    QVERIFY(std::fabs(state.zoom - expectedZoom) < 1.0);
}

void tst_MapGeometry::zoomKeepsThePlaceUnderThePointer()
{
    const MapViewState state {{46.95, 7.45}, 8.0, 900.0, 600.0};
    const QPointF pointer(700.0, 120.0);
    const Coordinate2D before = MapGeometry::coordinateForPoint(state, pointer);
    const MapViewState zoomed = MapGeometry::zoomedAround(state, pointer, 9.5);
    QCOMPARE(zoomed.zoom, 9.5);
    const QPointF after = MapGeometry::pointForCoordinate(zoomed, before);
    QVERIFY(std::hypot(after.x() - pointer.x(), after.y() - pointer.y()) < 1e-6);
}

QTEST_GUILESS_MAIN(tst_MapGeometry)
#include "tst_MapGeometry.moc"
