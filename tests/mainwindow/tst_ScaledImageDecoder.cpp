#include "Fixtures.h"
#include "PreviewFixtures.h"
#include "mainwindow/preview/ScaledImageDecoder.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_ScaledImageDecoder : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(dir.isValid()); }
    void exifOrientationIsApplied_data();
    void exifOrientationIsApplied();
    void rawFileShowsItsEmbeddedPreview_data();
    void rawFileShowsItsEmbeddedPreview();
    void videoShowsAFrame_data();
    void videoShowsAFrame();
    void nothingDecodableGivesNoImage();

private:
    QTemporaryDir dir;
};

void tst_ScaledImageDecoder::exifOrientationIsApplied_data()
{
    QTest::addColumn<int>("orientation");
    QTest::addColumn<QSize>("upright");
    // The fixtures' scenes have a light sun near the top left corner as stored; this is where it
    // ends up, as a share of the upright picture's size.
    QTest::addColumn<QPointF>("sun");
    QTest::newRow("1 as stored") << 1 << QSize(120, 80) << QPointF(0.15, 0.18);
    QTest::newRow("3 upside down") << 3 << QSize(120, 80) << QPointF(0.85, 0.82);
    QTest::newRow("6 turned clockwise") << 6 << QSize(80, 120) << QPointF(0.82, 0.15);
    QTest::newRow("8 turned anticlockwise") << 8 << QSize(80, 120) << QPointF(0.18, 0.85);
    QTest::newRow("5 mirrored and turned") << 5 << QSize(80, 120) << QPointF(0.18, 0.15);
}

void tst_ScaledImageDecoder::exifOrientationIsApplied()
{
    QFETCH(int, orientation);
    QFETCH(QSize, upright);
    QFETCH(QPointF, sun);
    const QColor base(40, 110, 180);
    const QString path = PreviewFixtures::makeOrientedJpeg(
        dir.path(), u"turned%1.jpg"_s.arg(orientation), {120, 80}, base, orientation);
    const auto decoded = ScaledImageDecoder::decode(path, {200, 200});
    QCOMPARE(decoded.image.size(), upright);
    QCOMPARE(decoded.originalSize, upright);
    QCOMPARE(decoded.mimeType, u"image/jpeg"_s);
    const QPoint at(int(sun.x() * upright.width()), int(sun.y() * upright.height()));
    QVERIFY2(PreviewFixtures::similar(decoded.image.pixelColor(at), base.lighter(150)),
             qPrintable(decoded.image.pixelColor(at).name()));
}

void tst_ScaledImageDecoder::rawFileShowsItsEmbeddedPreview_data()
{
    QTest::addColumn<int>("orientation");
    QTest::addColumn<QSize>("shown");
    QTest::addColumn<QSize>("original");
    QTest::newRow("landscape") << 1 << QSize(256, 171) << QSize(4000, 3000);
    QTest::newRow("camera held upright") << 6 << QSize(171, 256) << QSize(3000, 4000);
}

void tst_ScaledImageDecoder::rawFileShowsItsEmbeddedPreview()
{
    QFETCH(int, orientation);
    QFETCH(QSize, shown);
    QFETCH(QSize, original);
    const QColor orange(230, 130, 40);
    const QString path = PreviewFixtures::makeRawWithPreview(
        dir.path(), u"shot%1.dng"_s.arg(orientation), {4000, 3000},
        PreviewFixtures::scene({900, 600}, orange), orientation);
    const auto decoded = ScaledImageDecoder::decode(path, {256, 256});
    QCOMPARE(decoded.image.size(), shown);
    QCOMPARE(decoded.originalSize, original);
    QVERIFY(PreviewFixtures::similar(PreviewFixtures::centreColor(decoded.image), orange));
}

void tst_ScaledImageDecoder::videoShowsAFrame_data()
{
    QTest::addColumn<int>("rotation");
    QTest::addColumn<QSize>("shown");
    QTest::newRow("as recorded") << 0 << QSize(64, 32);
    QTest::newRow("recorded turned") << 90 << QSize(32, 64);
}

// A 64 by 32 clip; a phone held upright records the turn in the track's display matrix.
void tst_ScaledImageDecoder::videoShowsAFrame()
{
    QFETCH(int, rotation);
    QFETCH(QSize, shown);
    const QString path = Fixtures::makeVideo(dir.path(), u"clip%1.mp4"_s.arg(rotation),
                                             {u"-vf"_s, u"scale=64:32,setsar=1"_s});
    if (rotation != 0)
        QVERIFY(Fixtures::writeTags(path, {u"-Rotation=%1"_s.arg(rotation)}));
    const auto decoded = ScaledImageDecoder::decode(path, {128, 128});
    QCOMPARE(decoded.image.size(), shown);
    QCOMPARE(decoded.originalSize, shown);
    QVERIFY2(PreviewFixtures::similar(PreviewFixtures::centreColor(decoded.image), Qt::blue, 40),
             qPrintable(PreviewFixtures::centreColor(decoded.image).name()));
}

void tst_ScaledImageDecoder::nothingDecodableGivesNoImage()
{
    const QString audio = Fixtures::makeAudio(dir.path(), u"tone.m4a"_s);
    QVERIFY(ScaledImageDecoder::decode(audio, {128, 128}).image.isNull());
    const QString text = Fixtures::makeFile(dir.path(), u"readme.txt"_s, "plain words");
    const auto decoded = ScaledImageDecoder::decode(text, {128, 128});
    QVERIFY(decoded.image.isNull());
    QCOMPARE(decoded.mimeType, u"text/plain"_s);
}

QTEST_MAIN(tst_ScaledImageDecoder)
#include "tst_ScaledImageDecoder.moc"
