#include "acquisition/ExifToolHelper.h"
#include "commons/ApplicationStart.h"
#include "location/GPSCoordinateComponent.h"
#include "map/MediaFileMarkers.h"
#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"
#include "session/DataModel.h"
#include "writing/ChangeManager.h"
#include "writing/PendingWriteSink.h"
#include "writing/WriteEngine.h"

#include "Fixtures.h"
#include "RecordingDoubles.h"
#include "RecordingWriteSink.h"
#include "TestSupport.h"
#include "WriteFixtures.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

// The map's markers by path, one per file as on the map: every read of a file with a complete
// position adds its marker again.
class RecordingMarkers : public MediaFileMarkers
{
public:
    void addMarker(const NodePtr &node) override
    {
        paths.removeAll(node->absolutePath);
        paths << node->absolutePath;
    }
    void removeAllMediaFileMarkers() override { paths.clear(); }
    void removeMediaFileMarker(const QString &path) override { paths.removeAll(path); }
    QStringList paths;
};

} // namespace

class tst_ChangeManager : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void gpsPairs_data();
    void gpsPairs();
    void remappedToMWG_data();
    void remappedToMWG();
    void gpsApplyAddsXMPPairsPerFile();
    void pinnedFieldsUseMWGTagsPerFile_data();
    void pinnedFieldsUseMWGTagsPerFile();
    void emptyInputsChangeNothing();
    void completionReannouncesSelection();
    void editsAreSeenOnceWritten_data();
    void editsAreSeenOnceWritten();

private:
    // A fresh model that the change manager works on.
    void useNewModel();

    QTemporaryDir m_dir;
    std::unique_ptr<DataModel> m_model;
};

void tst_ChangeManager::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    ApplicationStart::installMetadataReaders();
}

void tst_ChangeManager::cleanup()
{
    ChangeManager::setDataModel(nullptr);
    m_model.reset();
}

void tst_ChangeManager::useNewModel()
{
    m_model = std::make_unique<DataModel>();
    ChangeManager::setDataModel(m_model.get());
}

void tst_ChangeManager::gpsPairs_data()
{
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QString>("latitude");
    QTest::addColumn<QString>("longitude");
    QTest::addColumn<QStringList>("pairs");
    QTest::newRow("jpeg west of Greenwich")
        << u"jpg"_s << u"51.5"_s << u"-0.5"_s
        << QStringList {u"GPSLatitude#"_s,    u"51.5"_s, u"GPSLongitude#"_s,  u"-0.5"_s,
                        u"GPSLongitudeRef"_s, u"West"_s, u"GPSLatitudeRef"_s, u"North"_s};
    QTest::newRow("zero is north, minus zero south")
        << u"tif"_s << u"-0"_s << u"0"_s
        << QStringList {u"GPSLatitude#"_s,    u"-0"_s,   u"GPSLongitude#"_s,  u"0"_s,
                        u"GPSLongitudeRef"_s, u"East"_s, u"GPSLatitudeRef"_s, u"South"_s};
    QTest::newRow("movie has no references")
        << u"MOV"_s << u"-33.9"_s << u"151.2"_s
        << QStringList {u"GPSLatitude#"_s, u"-33.9"_s, u"GPSLongitude#"_s, u"151.2"_s};
    QTest::newRow("lower-case 3gp is QuickTime too")
        << u"3gp"_s << u"1"_s << u"2"_s
        << QStringList {u"GPSLatitude#"_s, u"1"_s, u"GPSLongitude#"_s, u"2"_s};
}

void tst_ChangeManager::gpsPairs()
{
    QFETCH(QString, extension);
    QFETCH(QString, latitude);
    QFETCH(QString, longitude);
    QTEST(ChangeManager::gpsTagValuePairs(extension, latitude, longitude), "pairs");
}

void tst_ChangeManager::remappedToMWG_data()
{
    QTest::addColumn<QStringList>("pairs");
    QTest::addColumn<QStringList>("remapped");
    QTest::newRow("all four in order")
        << QStringList {u"Sub-location"_s,   u"a"_s, u"City"_s,    u"b"_s,
                        u"Province-State"_s, u"c"_s, u"Country"_s, u"d"_s}
        << QStringList {u"MWG:Location"_s, u"a"_s, u"MWG:City"_s,    u"b"_s,
                        u"MWG:State"_s,    u"c"_s, u"MWG:Country"_s, u"d"_s};
    QTest::newRow("unknown tag passes")
        << QStringList {u"Headline"_s, u"City"_s, u"City"_s, u"x"_s}
        << QStringList {u"Headline"_s, u"City"_s, u"MWG:City"_s, u"x"_s};
    QTest::newRow("one entry gives nothing") << QStringList {u"City"_s} << QStringList();
    QTest::newRow("empty") << QStringList() << QStringList();
}

void tst_ChangeManager::remappedToMWG()
{
    QFETCH(QStringList, pairs);
    QTEST(ChangeManager::remappedToMWG(pairs), "remapped");
}

void tst_ChangeManager::gpsApplyAddsXMPPairsPerFile()
{
    const NodePtr plain = Fixtures::readNode(Fixtures::makeJpeg(m_dir.path(), u"plain.jpg"_s));
    const NodePtr withXmp = Fixtures::readNode(
        Fixtures::makeJpeg(m_dir.path(), u"xmp.jpg"_s, {u"-XMP:Title=kept"_s}));
    QVERIFY(plain && withXmp);

    useNewModel();
    m_model->setSelectedNodes({withXmp, plain});
    m_model->gpsCoordinateComponent->typeInLatitudeField(u"51.5"_s);
    m_model->gpsCoordinateComponent->typeInLongitudeField(u"-0.5"_s);

    RecordingWriteSink sink;
    ChangeManager::applyGPSToCurrentSelection();
    QCOMPARE(sink.clearCount, 1);
    QCOMPARE(sink.flushedCount, 2);
    QCOMPARE(sink.writes.size(), 2);
    QCOMPARE(sink.writes[0].node, withXmp);
    QCOMPARE(sink.writes[0].filePath, withXmp->absolutePath);
    // The interface is normalised, the writes carry the typed texts as they stand.
    const QStringList xmpPairs {u"XMP:GPSLatitude"_s, u"51.5"_s, u"XMP:GPSLongitude"_s, u"-0.5"_s};
    QCOMPARE(sink.writes[0].tagValuePairs,
             ChangeManager::gpsTagValuePairs(u"jpg"_s, u"51.5"_s, u"-0.5"_s) + xmpPairs);
    QCOMPARE(sink.writes[1].tagValuePairs,
             ChangeManager::gpsTagValuePairs(u"jpg"_s, u"51.5"_s, u"-0.5"_s));
    QCOMPARE(m_model->gpsCoordinateComponent->_currentLatitudeInInterface->value(),
             u"+51.500000"_s);
    QVERIFY(sink.writes[1].completionHandler);
}

void tst_ChangeManager::pinnedFieldsUseMWGTagsPerFile_data()
{
    QTest::addColumn<int>("field");
    QTest::addColumn<QString>("tag");
    QTest::addColumn<QString>("mwgTag");
    QTest::newRow("city") << 0 << u"City"_s << u"MWG:City"_s;
    QTest::newRow("region") << 1 << u"Province-State"_s << u"MWG:State"_s;
    QTest::newRow("sub-location") << 2 << u"Sub-location"_s << u"MWG:Location"_s;
    QTest::newRow("country") << 3 << u"Country"_s << u"MWG:Country"_s;
}

void tst_ChangeManager::pinnedFieldsUseMWGTagsPerFile()
{
    QFETCH(int, field);
    QFETCH(QString, tag);
    QFETCH(QString, mwgTag);
    const NodePtr plain = Fixtures::readNode(Fixtures::makeJpeg(m_dir.path(), u"pinplain.jpg"_s));
    const NodePtr withXmp = Fixtures::readNode(
        Fixtures::makeJpeg(m_dir.path(), u"pinxmp.jpg"_s, {u"-XMP:Title=kept"_s}));
    QVERIFY(plain && withXmp);
    useNewModel();
    m_model->setSelectedNodes({plain, withXmp});

    const std::array<DataModel::Straight<QString>, 4> pinned {
        m_model->_pinnedLocationCity, m_model->_pinnedLocationRegion,
        m_model->_pinnedSublocationName, m_model->_pinnedLocationCountry};
    const std::array<void (*)(), 4> apply {
        &ChangeManager::applyCurrentPinnedCityToCurrentSelection,
        &ChangeManager::applyCurrentPinnedRegionToCurrentSelection,
        &ChangeManager::applyCurrentPinnedSubLocationToCurrentSelection,
        &ChangeManager::applyCurrentPinnedCountryToCurrentSelection};

    RecordingWriteSink sink;
    apply[field]();
    QVERIFY(sink.writes.isEmpty());
    QCOMPARE(sink.clearCount, 0);

    pinned[field]->setValue(u"Zürich"_s);
    apply[field]();
    QCOMPARE(sink.writes.size(), 2);
    QCOMPARE(sink.writes[0].tagValuePairs, (QStringList {tag, u"Zürich"_s}));
    QCOMPARE(sink.writes[1].tagValuePairs, (QStringList {mwgTag, u"Zürich"_s}));
}

void tst_ChangeManager::emptyInputsChangeNothing()
{
    const NodePtr node = Fixtures::readNode(Fixtures::makeJpeg(m_dir.path(), u"empty.jpg"_s));
    QVERIFY(node);
    useNewModel();
    GPSCoordinateComponent &component = *m_model->gpsCoordinateComponent;
    RecordingWriteSink sink;

    // An empty selection leaves even the interface alone.
    m_model->_pinnedLatitudeString->setValue(u"10"_s);
    m_model->_pinnedLongitudeString->setValue(u"20"_s);
    m_model->_pinnedLocationCity->setValue(u"Basel"_s);
    ChangeManager::applyCurrentPinnedGPSToCurrentSelection();
    ChangeManager::applyCurrentPinnedCityToCurrentSelection();
    QCOMPARE(component._currentLatitudeInInterface->value(), QString());

    // One empty half: nothing is written.
    m_model->setSelectedNodes({node});
    m_model->_pinnedLongitudeString->setValue(QString());
    ChangeManager::applyCurrentPinnedGPSToCurrentSelection();
    QVERIFY(sink.writes.isEmpty());
    QCOMPARE(sink.clearCount, 0);

    m_model->_pinnedLongitudeString->setValue(u"20"_s);
    ChangeManager::applyCurrentPinnedGPSToCurrentSelection();
    QCOMPARE(sink.writes.size(), 1);
    QCOMPARE(component._currentLongitudeInInterface->value(), u"+20.000000"_s);
}

void tst_ChangeManager::completionReannouncesSelection()
{
    const NodePtr node = Fixtures::readNode(Fixtures::makeJpeg(m_dir.path(), u"again.jpg"_s));
    QVERIFY(node);
    useNewModel();
    m_model->setSelectedNodes({node});
    m_model->_pinnedLocationCountry->setValue(u"Chile"_s);
    RecordingWriteSink sink;
    ChangeManager::applyCurrentPinnedCountryToCurrentSelection();
    QCOMPARE(sink.writes.size(), 1);

    int announcements = 0;
    m_model->_selectedNodes->addColdListener([&](const QList<NodePtr> &) { ++announcements; });
    // The files of a batch report together; the selection is announced once for all of them.
    sink.writes[0].completionHandler(false);
    sink.writes[0].completionHandler(true);
    QCOMPARE(announcements, 0);
    QTRY_COMPARE(announcements, 1);
    QCoreApplication::processEvents();
    QCOMPARE(announcements, 1);
    QCOMPARE(m_model->selectedNodes(), QList<NodePtr> {node});

    // A model that has gone is not revived.
    const auto handler = sink.writes[0].completionHandler;
    ChangeManager::setDataModel(nullptr);
    m_model.reset();
    handler(true);
    QCoreApplication::processEvents();
}

void tst_ChangeManager::editsAreSeenOnceWritten_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"photo.jpg", "photo.tif", "picture.png", "photo.heic", "photo.webp",
                             "clip.mp4", "clip.mov", "sound.m4a"})
        QTest::newRow(name) << QString::fromLatin1(name);
    // Both of its copies are XMP: the file has no IPTC record for the place to go into.
    QTest::newRow("JPEG with XMP and no IPTC") << u"xmp-only.jpg"_s;
}

// A position and a place applied through the pins travel the whole way: the write engine and
// its worker, the re-read, and every reader of the plain names (values, statuses, map marker),
// whichever copy the file type keeps them in.
void tst_ChangeManager::editsAreSeenOnceWritten()
{
    QFETCH(QString, name);
    const QString path = m_dir.filePath(u"seen-"_s + name);
    const QString made = WriteFixtures::makeFixture(path);
    QVERIFY2(made.isEmpty(), qPrintable(made));
    if (name.startsWith(u"xmp-only"_s))
        QCOMPARE(WriteFixtures::exifTool({u"-q"_s, u"-overwrite_original"_s, u"-IPTC:all="_s, path})
                     .exitCode,
                 0);
    const NodePtr node = Fixtures::readNode(path);
    QVERIFY(node);

    RecordingPresenter presenter;
    AlertPresenter::install(&presenter);
    RecordingMarkers markers;
    MediaFileMarkers::install(&markers);
    ApplicationStart::installWritePath();
    useNewModel();
    m_model->setSelectedNodes({node});
    m_model->_pinnedLatitudeString->setValue(u"-33.856784"_s);
    m_model->_pinnedLongitudeString->setValue(u"151.215297"_s);
    m_model->_pinnedLocationCity->setValue(u"Sydney"_s);
    m_model->_pinnedLocationRegion->setValue(u"New South Wales"_s);
    m_model->_pinnedLocationCountry->setValue(u"Australia"_s);
    ChangeManager::applyCurrentPinnedGPSToCurrentSelection();
    ChangeManager::applyCurrentPinnedCityToCurrentSelection();
    ChangeManager::applyCurrentPinnedRegionToCurrentSelection();
    ChangeManager::applyCurrentPinnedCountryToCurrentSelection();
    WriteEngine::shared().waitForCompletion();
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
    PendingWriteSink::install(nullptr);
    MediaFileMarkers::install(nullptr);
    AlertPresenter::install(nullptr);
    QVERIFY2(presenter.alerts.isEmpty(), qPrintable(presenter.alerts.value(0).text));

    const auto shown = [&](const QString &key) {
        return node->getDisplayString(key).text();
    };
    QCOMPARE(shown(u"City"_s), u"Sydney"_s);
    QCOMPARE(shown(u"Province-State"_s), u"New South Wales"_s);
    QCOMPARE(shown(u"Country"_s), u"Australia"_s);
    QCOMPARE(node->getIntValueSync(u"IPTCDataComplete"_s), 1);
    QCOMPARE(shown(u"GPSDataAvailable"_s), u"complete"_s);
    // Signed by the references where the type has them.
    const bool quickTime = ExifToolHelper::isQuickTimeFamily(QFileInfo(path).suffix());
    const double latitudeSign = quickTime || shown(u"GPSLatitudeRef"_s) == u"North"_s ? 1 : -1;
    QCOMPARE(shown(u"GPSLatitude#"_s).toDouble() * latitudeSign, -33.856784);
    QCOMPARE(shown(u"GPSLongitude#"_s).toDouble(), 151.215297);
    QVERIFY(quickTime || shown(u"GPSLongitudeRef"_s) == u"East"_s);
    QCOMPARE(markers.paths, QStringList {path});
}

QTEST_GUILESS_MAIN(tst_ChangeManager)
#include "tst_ChangeManager.moc"
