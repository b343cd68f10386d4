#include "map/GeotagMapContent.h"

#include <QTest>

// A track across the 180th meridian is drawn and framed as the short line it is.
class tst_GeotagMapContent : public QObject
{
    Q_OBJECT

private slots:
    void longitudesRunOnAcrossTheAntimeridian_data();
    void longitudesRunOnAcrossTheAntimeridian();
};

void tst_GeotagMapContent::longitudesRunOnAcrossTheAntimeridian_data()
{
    QTest::addColumn<QList<QList<double>>>("track");
    QTest::addColumn<QList<double>>("landings");
    QTest::addColumn<QList<QList<double>>>("expectedTrack");
    QTest::addColumn<QList<double>>("expectedLandings");
    QTest::addColumn<double>("span");

    QTest::newRow("eastward") << QList<QList<double>> {{179.5, 179.9, -179.7}}
                              << QList<double> {-179.8, 179.6}
                              << QList<QList<double>> {{179.5, 179.9, 180.3}}
                              << QList<double> {180.2, 179.6} << 0.8;
    QTest::newRow("westward, on into the next segment")
        << QList<QList<double>> {{-179.6, 179.8}, {179.2}} << QList<double> {179.5}
        << QList<QList<double>> {{-179.6, -180.2}, {-180.8}} << QList<double> {-180.5} << 1.2;
    QTest::newRow("away from it nothing moves")
        << QList<QList<double>> {{2.0, 2.5}} << QList<double> {2.2}
        << QList<QList<double>> {{2.0, 2.5}} << QList<double> {2.2} << 0.5;
}

void tst_GeotagMapContent::longitudesRunOnAcrossTheAntimeridian()
{
    QFETCH(QList<QList<double>>, track);
    QFETCH(QList<double>, landings);
    QFETCH(QList<QList<double>>, expectedTrack);
    QFETCH(QList<double>, expectedLandings);
    QFETCH(double, span);

    QList<QList<Coordinate2D>> segments;
    for (const QList<double> &longitudes : track) {
        segments.append(QList<Coordinate2D>());
        for (double longitude : longitudes)
            segments.last().append(Coordinate2D {10.0, longitude});
    }
    QList<GeotagMapContent::Landing> points;
    for (double longitude : landings)
        points.append({int(points.size()), {10.0, longitude}, QString(), QString()});

    const GeotagMapContent content(segments, points);
    QCOMPARE(content.segments().size(), expectedTrack.size());
    for (qsizetype s = 0; s < expectedTrack.size(); ++s) {
        QCOMPARE(content.segments()[s].size(), expectedTrack[s].size());
        for (qsizetype i = 0; i < expectedTrack[s].size(); ++i)
            QCOMPARE(content.segments()[s][i].longitude, expectedTrack[s][i]);
    }
    for (qsizetype i = 0; i < expectedLandings.size(); ++i)
        QCOMPARE(content.landings()[i].coordinate.longitude, expectedLandings[i]);
    // The frame is the track's own width with a tenth more on each side.
    QVERIFY(content.bounds());
    QCOMPARE(content.bounds()->longitudeDelta, span * 1.2);
}

QTEST_GUILESS_MAIN(tst_GeotagMapContent)
#include "tst_GeotagMapContent.moc"
