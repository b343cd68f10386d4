#include "map/MapGeometry.h"
#include "map/MarkerClusterIndex.h"

#include <QRandomGenerator>
#include <QSet>
#include <QTest>

#include <cmath>

using Point = MarkerClusterIndex::Point;

class tst_MarkerClusterIndex : public QObject
{
    Q_OBJECT

private slots:
    void clustersByDistance_data();
    void clustersByDistance();
    void everyLevelHoldsEveryPointOnce();
    void queriesReachIntoTheNextCopyOfTheWorld();
};

namespace {

const QRectF wholeWorld(0.0, 0.0, 1.0, 1.0);

// The counts of a level's entries, largest first.
QList<quint32> counts(const MarkerClusterIndex &index, int level)
{
    QList<quint32> result;
    for (const MarkerClusterIndex::Found &found : index.entriesIn(level, wholeWorld))
        result.append(index.entry(found.level, found.index).count);
    std::sort(result.begin(), result.end(), std::greater<>());
    return result;
}

} // namespace

void tst_MarkerClusterIndex::clustersByDistance_data()
{
    QTest::addColumn<QList<Coordinate2D>>("places");
    QTest::addColumn<int>("level");
    QTest::addColumn<QList<quint32>>("expected");
    const QList<Coordinate2D> twoCities {{48.8566, 2.3522}, {48.8600, 2.3400}, {45.7640, 4.8357}};
    // At zoom 5 the two Paris places lie less than a point apart, Lyon about 60 points away.
    QTest::newRow("near places merge") << twoCities << 5 << QList<quint32> {2, 1};
    QTest::newRow("a country away everything merges") << twoCities << 1 << QList<quint32> {3};
    QTest::newRow("close up nothing merges") << twoCities << 15 << QList<quint32> {1, 1, 1};
    const QList<Coordinate2D> samePlace {{47.3769, 8.5417}, {47.3769, 8.5417}, {47.3769, 8.5417}};
    QTest::newRow("one place stays one cluster at the closest zoom")
        << samePlace << MarkerClusterIndex::maximumLevel << QList<quint32> {3};
}

void tst_MarkerClusterIndex::clustersByDistance()
{
    QFETCH(QList<Coordinate2D>, places);
    QFETCH(int, level);
    std::vector<Point> points;
    for (qsizetype i = 0; i < places.size(); ++i)
        points.push_back({places.at(i), quint32(100 + i)});
    const MarkerClusterIndex index(points, 40.0);
    QTEST(counts(index, level), "expected");
}

void tst_MarkerClusterIndex::everyLevelHoldsEveryPointOnce()
{
    // Dense groups among scattered points, so that every level mixes clusters and single points.
    QRandomGenerator random(7);
    std::vector<Point> points;
    for (quint32 id = 0; id < 6000; ++id) {
        const bool grouped = id % 3 == 0;
        const double latitude = grouped ? 46.0 + (id % 30) * 0.1 : random.bounded(-60.0) + 30.0;
        const double longitude = grouped ? 7.0 + (id % 7) * 0.1 : random.bounded(360.0) - 180.0;
        points.push_back({{latitude, longitude}, id * 2});
    }
    const MarkerClusterIndex index(points, 40.0);
    QCOMPARE(index.pointCount(), qsizetype(points.size()));
    QSet<quint32> ids(index.leafOrder().begin(), index.leafOrder().end());
    QCOMPARE(ids.size(), qsizetype(points.size()));

    for (int level = 0; level <= MarkerClusterIndex::maximumLevel; ++level) {
        const double reach = 40.0 / MapGeometry::worldSize(level);
        quint32 total = 0;
        QSet<quint32> seen;
        for (const MarkerClusterIndex::Found &found : index.entriesIn(level, wholeWorld)) {
            const MarkerClusterIndex::Entry &entry = index.entry(found.level, found.index);
            total += entry.count;
            // Leaves lie near their cluster: within reach of the cluster's first member at each
            // level, and the reach halves with every level below.
            for (const quint32 id : index.leaves(entry)) {
                QVERIFY(!seen.contains(id));
                seen.insert(id);
                const QPointF unit = MapGeometry::unitPoint(points[id / 2].coordinate);
                const double distance = std::hypot(unit.x() - entry.x, unit.y() - entry.y);
                QVERIFY2(distance <= 4.0 * reach, qPrintable(QString::number(level)));
            }
        }
        QCOMPARE(total, quint32(points.size()));
    }
    QVERIFY(counts(index, 0).size() < counts(index, 12).size());
}

void tst_MarkerClusterIndex::queriesReachIntoTheNextCopyOfTheWorld()
{
    const MarkerClusterIndex index({{{10.0, -179.5}, 1}, {{10.0, 170.0}, 2}}, 40.0);
    // A view centred on the antimeridian at zoom 6: the western point lies in the next copy.
    const MapViewState state {{10.0, 180.0}, 6.0, 800.0, 600.0};
    const std::vector<MarkerClusterIndex::Found> found
        = index.entriesIn(6, MapGeometry::unitRect(state));
    QCOMPARE(found.size(), size_t(1));
    QCOMPARE(found.front().turns, 1);
    const Coordinate2D drawn = MarkerClusterIndex::coordinate(
        index.entry(found.front().level, found.front().index), found.front().turns);
    QVERIFY(std::fabs(drawn.longitude - 180.5) < 1e-6);
}

QTEST_GUILESS_MAIN(tst_MarkerClusterIndex)
#include "tst_MarkerClusterIndex.moc"
