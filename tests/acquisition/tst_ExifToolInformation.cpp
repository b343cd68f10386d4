#include "commons/ApplicationStart.h"
#include "map/MediaFileMarkers.h"
#include "metadata/DataCoordinator.h"
#include "session/DataAvailabilityCellState.h"
#include "session/FileScanner.h"
#include "session/Node.h"

#include "Fixtures.h"
#include "TestSupport.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
class RecordingMarkers : public MediaFileMarkers
{
public:
    void addMarker(const NodePtr &node) override { paths << node->name; }
    void removeAllMediaFileMarkers() override { paths.clear(); }
    void removeMediaFileMarker(const QString &path) override
    {
        paths.removeAll(path.section(u'/', -1));
    }
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
    void unreadableItemsOfAScannedFolder();
    void sidecarValues_data();
    void sidecarValues();

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
    const QStringList fullGps {u"-GPSLatitude=48.8584"_s, u"-GPSLatitudeRef=N"_s,
                               u"-GPSLongitude=2.2945"_s, u"-GPSLongitudeRef=E"_s};
    QTest::newRow("nothing") << u"jpg"_s << QStringList() << u"none"_s << 0 << false;
    QTest::newRow("complete GPS") << u"jpg"_s << fullGps << u"complete"_s << 0 << true;
    // A complete position keeps its marker even when the XMP copy disagrees.
    QTest::newRow("EXIF and XMP disagree")
        << u"jpg"_s
        << (fullGps + QStringList {u"-XMP:GPSLatitude=40.0"_s, u"-XMP:GPSLongitude=3.0"_s})
        << u"divergent"_s << 0 << true;
    QTest::newRow("IPTC complete")
        << u"jpg"_s
        << QStringList {u"-IPTC:City=Zürich"_s, u"-IPTC:Province-State=ZH"_s,
                        u"-IPTC:Country-PrimaryLocationName=Switzerland"_s}
        << u"none"_s << 1 << false;
    QTest::newRow("IPTC and XMP city disagree")
        << u"jpg"_s << QStringList {u"-IPTC:City=Basel"_s, u"-XMP-photoshop:City=Bern"_s}
        << u"none"_s << 3 << false;
    QTest::newRow("movie with a position")
        << u"mp4"_s << QStringList {u"-Keys:GPSCoordinates=48.8584, 2.2945, 0"_s} << u"complete"_s
        << 0 << true;
    // The XMP copy stands in where there is no legacy one: statuses and markers see it.
    const QStringList xmpGps {u"-XMP-exif:GPSLatitude=-33.86"_s, u"-XMP-exif:GPSLongitude=151.2"_s};
    const QStringList xmpLocation {u"-XMP-photoshop:City=Sydney"_s, u"-XMP-photoshop:State=NSW"_s,
                                   u"-XMP-photoshop:Country=Australia"_s};
    QTest::newRow("XMP position and location only")
        << u"jpg"_s << xmpGps + xmpLocation << u"complete"_s << 1 << true;
    QTest::newRow("movie with an XMP position only")
        << u"mp4"_s << xmpGps << u"complete"_s << 0 << true;
    QTest::newRow("GIF with XMP") << u"gif"_s << xmpGps + xmpLocation << u"complete"_s << 1 << true;
}

void tst_ExifToolInformation::statusesOfRealFiles()
{
    QFETCH(QString, kind);
    QFETCH(QStringList, arguments);
    const QString name = u"%1.%2"_s.arg(
        QString::fromLatin1(QTest::currentDataTag()).replace(QLatin1Char(' '), QLatin1Char('_')),
        kind);
    QString path;
    if (kind == QLatin1String("mp4")) {
        path = Fixtures::makeVideo(m_dir.path(), name);
        if (!arguments.isEmpty())
            QVERIFY(Fixtures::writeTags(path, arguments));
    } else if (kind == QLatin1String("gif")) {
        path = Fixtures::makeGif(m_dir.path(), name, arguments);
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
            return node->getDisplayString(u"GPSDataAvailable"_s).isPresent()
                && node->getDisplayString(u"IPTCDataComplete"_s).isPresent();
        },
        20000));
    QTEST(node->getDisplayString(u"GPSDataAvailable"_s).text(), "gpsText");
    QTEST(int(node->getIntValueSync(u"IPTCDataComplete"_s)), "iptcStatus");
    QFETCH(bool, marker);
    QCOMPARE(m_markers.paths.contains(name), marker);
}

void tst_ExifToolInformation::unreadableItemsOfAScannedFolder()
{
    // A pipe, socket or device named like a photo stays an item of the list; reading it never
    // blocks the reads behind it. Its metadata is missing and marked as read.
    QTemporaryDir folder;
    const QMap<QString, QString> unreadable
        = Fixtures::makeUnreadableFiles(folder.path(), u"a"_s, u"jpg"_s);
    QVERIFY(!unreadable.isEmpty());
    Fixtures::makeJpeg(folder.path(), u"z-readable.jpg"_s,
                       {u"-GPSLatitude=1.5"_s, u"-GPSLatitudeRef=N"_s, u"-GPSLongitude=2.5"_s,
                        u"-GPSLongitudeRef=E"_s});
    FileScanner scanner;
    scanner.scanSource(folder.path());
    const QList<NodePtr> &items = scanner.flatFileList.files;
    QCOMPARE(items.size(), unreadable.size() + 1);
    for (const NodePtr &node : items) {
        QVERIFY2(
            TestSupport::waitUntil(
                [&] { return node->getDisplayString(u"GPSDataAvailable"_s).isPresent(); }, 20000),
            qPrintable(node->name));
        const bool readable = node->name == u"z-readable.jpg"_s;
        QCOMPARE(node->getDisplayString(u"GPSDataAvailable"_s).text(),
                 readable ? u"complete"_s : u"none"_s);
        // The search-index reader answers too, with nothing from the content.
        QVERIFY(TestSupport::waitUntil([&] {
            return node->getDisplayString(u"headline"_s).kind()
                != DisplayStringWrapper::Kind::Waiting;
        }));
        QCOMPARE(node->getDisplayString(u"headline"_s).kind(),
                 DisplayStringWrapper::Kind::NotPresent);
    }
}

void tst_ExifToolInformation::sidecarValues_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("fileTags");
    QTest::addColumn<QStringList>("sidecars"); // name, then its tags after "|"
    QTest::addColumn<QString>("city");
    QTest::addColumn<QString>("gpsText");
    QTest::addColumn<int>("iptcStatus");
    QTest::addColumn<QString>("tooltipNames");
    QTest::addColumn<QString>("sidecarCity");
    const QString sydney = u"-XMP-exif:GPSLatitude=-33.86|-XMP-exif:GPSLongitude=151.2|"
                           "-XMP-photoshop:City=Sydney|-XMP-photoshop:State=NSW|"
                           "-XMP-photoshop:Country=Australia"_s;
    // A RAW stand-in (a TIFF under a RAW name) whose location lives only in its sidecar.
    QTest::newRow("darktable-style sidecar stands in")
        << u"only.nef"_s << QStringList() << QStringList {u"only.nef.xmp|"_s + sydney}
        << u"Sydney"_s << u"complete"_s << 1 << QString() << u"Sydney"_s;
    QTest::newRow("Lightroom-style sidecar disagrees")
        << u"differs.nef"_s
        << QStringList {u"-IPTC:City=Basel"_s, u"-GPSLatitude=1"_s, u"-GPSLatitudeRef=N"_s,
                        u"-GPSLongitude=2"_s, u"-GPSLongitudeRef=E"_s}
        << QStringList {u"differs.xmp|"_s + sydney} << u"Basel"_s << u"divergent"_s << 3
        << u"differs.xmp"_s << u"Sydney"_s;
    QTest::newRow("both forms: the darktable one is read")
        << u"both.nef"_s << QStringList()
        << QStringList {u"both.nef.xmp|-XMP-photoshop:City=Lyon"_s,
                        u"both.xmp|-XMP-photoshop:City=Nice"_s}
        << u"Lyon"_s << u"none"_s << 2 << QString() << u"Lyon"_s;
}

void tst_ExifToolInformation::sidecarValues()
{
    QFETCH(QString, file);
    QFETCH(QStringList, fileTags);
    QFETCH(QStringList, sidecars);
    const QString tiff = m_dir.filePath(file + u".tif"_s);
    QVERIFY(Fixtures::run(u"convert"_s, {u"-size"_s, u"16x16"_s, u"xc:gray"_s, tiff}));
    const QString path = m_dir.filePath(file);
    QVERIFY(QFile::rename(tiff, path));
    if (!fileTags.isEmpty())
        QVERIFY(Fixtures::writeTags(path, fileTags));
    for (const QString &sidecar : std::as_const(sidecars)) {
        const QStringList parts = sidecar.split(u'|');
        QVERIFY(Fixtures::run(Fixtures::exifToolPath(),
                              parts.mid(1) + QStringList {u"-o"_s, m_dir.filePath(parts.first())}));
    }

    const NodePtr node = FileNode::create(file, path, QString());
    QVERIFY(TestSupport::waitUntil(
        [&] { return node->getDisplayString(u"IPTCDataComplete"_s).isPresent(); }, 20000));
    QTEST(node->getStringValueSync(u"City"_s), "city");
    QTEST(node->getDisplayString(u"GPSDataAvailable"_s).text(), "gpsText");
    QTEST(int(node->getIntValueSync(u"IPTCDataComplete"_s)), "iptcStatus");
    QTEST(node->getStringValueSync(u"SidecarCity"_s), "sidecarCity");
    QFETCH(QString, tooltipNames);
    if (!tooltipNames.isEmpty()) {
        QVERIFY(DataAvailabilityCellState::divergenceTooltip(*node, true).contains(tooltipNames));
        QVERIFY(DataAvailabilityCellState::divergenceTooltip(*node, false).contains(u"City"_s));
    }
}

QTEST_GUILESS_MAIN(tst_ExifToolInformation)
#include "tst_ExifToolInformation.moc"
