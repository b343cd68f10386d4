#include "commons/ApplicationStart.h"
#include "map/MediaFileMarkers.h"
#include "metadata/DataCoordinator.h"
#include "session/Node.h"

#include "Fixtures.h"
#include "TestSupport.h"

#include <QTemporaryDir>
#include <QTest>

namespace {
class RecordingMarkers : public MediaFileMarkers
{
public:
    void addMarker(const NodePtr &node) override { paths << node->name; }
    void removeAllMediaFileMarkers() override { paths.clear(); }
    QStringList paths;
};
} // namespace

class tst_ExifToolInformation : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase() { MediaFileMarkers::install(nullptr); }
    void statusesOfRealFiles_data();
    void statusesOfRealFiles();

private:
    QTemporaryDir m_dir;
    RecordingMarkers m_markers;
};

void tst_ExifToolInformation::initTestCase()
{
    ApplicationStart::installMetadataReaders();
    MediaFileMarkers::install(&m_markers);
}

void tst_ExifToolInformation::statusesOfRealFiles_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("gpsText");
    QTest::addColumn<int>("iptcStatus");
    QTest::addColumn<bool>("marker");
    const QStringList fullGps {
        QStringLiteral("-GPSLatitude=48.8584"), QStringLiteral("-GPSLatitudeRef=N"),
        QStringLiteral("-GPSLongitude=2.2945"), QStringLiteral("-GPSLongitudeRef=E")};
    QTest::newRow("nothing") << QStringLiteral("jpg") << QStringList() << QStringLiteral("none")
                             << 0 << false;
    QTest::newRow("complete GPS") << QStringLiteral("jpg") << fullGps << QStringLiteral("complete")
                                  << 0 << true;
    QTest::newRow("latitude only")
        << QStringLiteral("jpg")
        << QStringList {QStringLiteral("-GPSLatitude=10"), QStringLiteral("-GPSLatitudeRef=S")}
        << QStringLiteral("incomplete") << 0 << false;
    // A complete position keeps its marker even when the XMP copy disagrees.
    QTest::newRow("EXIF and XMP disagree")
        << QStringLiteral("jpg")
        << (fullGps
            + QStringList {QStringLiteral("-XMP:GPSLatitude=40.0"),
                           QStringLiteral("-XMP:GPSLongitude=3.0")})
        << QStringLiteral("divergent") << 0 << true;
    QTest::newRow("IPTC complete")
        << QStringLiteral("jpg")
        << QStringList {QStringLiteral("-IPTC:City=Zürich"),
                        QStringLiteral("-IPTC:Province-State=ZH"),
                        QStringLiteral("-IPTC:Country-PrimaryLocationName=Switzerland")}
        << QStringLiteral("none") << 1 << false;
    QTest::newRow("IPTC incomplete")
        << QStringLiteral("jpg") << QStringList {QStringLiteral("-IPTC:City=Basel")}
        << QStringLiteral("none") << 2 << false;
    QTest::newRow("IPTC and XMP city disagree")
        << QStringLiteral("jpg")
        << QStringList {QStringLiteral("-IPTC:City=Basel"),
                        QStringLiteral("-XMP-photoshop:City=Bern")}
        << QStringLiteral("none") << 3 << false;
    QTest::newRow("movie with a position")
        << QStringLiteral("mp4")
        << QStringList {QStringLiteral("-Keys:GPSCoordinates=48.8584, 2.2945, 0")}
        << QStringLiteral("complete") << 0 << true;
}

void tst_ExifToolInformation::statusesOfRealFiles()
{
    QFETCH(QString, kind);
    QFETCH(QStringList, arguments);
    const QString name = QStringLiteral("%1.%2").arg(
        QString::fromLatin1(QTest::currentDataTag()).replace(QLatin1Char(' '), QLatin1Char('_')),
        kind);
    QString path;
    if (kind == QLatin1String("mp4")) {
        path = Fixtures::makeVideo(m_dir.path(), name);
        if (!arguments.isEmpty())
            QVERIFY(Fixtures::writeTags(path, arguments));
    } else {
        path = Fixtures::makeJpeg(m_dir.path(), name, arguments);
    }
    QVERIFY(!path.isEmpty());
    m_markers.paths.clear();

    const NodePtr node = FileNode::create(name, path, QString());
    // The read scheduled by the node's creation answers in the background, and stores the IPTC
    // status after the GPS one.
    QVERIFY(TestSupport::waitUntil(
        [&] {
            return node->getDisplayString(QStringLiteral("GPSDataAvailable")).isPresent()
                && node->getDisplayString(QStringLiteral("IPTCDataComplete")).isPresent();
        },
        20000));
    QTEST(node->getDisplayString(QStringLiteral("GPSDataAvailable")).text(), "gpsText");
    QTEST(int(node->getIntValueSync(QStringLiteral("IPTCDataComplete"))), "iptcStatus");
    QFETCH(bool, marker);
    QCOMPARE(m_markers.paths.contains(name), marker);
}

QTEST_GUILESS_MAIN(tst_ExifToolInformation)
#include "tst_ExifToolInformation.moc"
