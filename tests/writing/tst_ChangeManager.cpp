#include "commons/ApplicationStart.h"
#include "location/GPSCoordinateComponent.h"
#include "metadata/MetadataStorage.h"
#include "session/DataModel.h"
#include "writing/ChangeManager.h"
#include "writing/DirectPendingWriteSink.h"

#include "Fixtures.h"
#include "RecordingWriteSink.h"
#include "TestSupport.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

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
    void oneGPSEditReachesTheFilesAndTheStore();

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
    sink.writes[0].completionHandler(false);
    QCOMPARE(announcements, 1);
    QCOMPARE(m_model->selectedNodes(), QList<NodePtr> {node});

    // A model that has gone is not revived.
    const auto handler = sink.writes[0].completionHandler;
    ChangeManager::setDataModel(nullptr);
    m_model.reset();
    handler(true);
}

void tst_ChangeManager::oneGPSEditReachesTheFilesAndTheStore()
{
    const NodePtr jpeg = Fixtures::readNode(Fixtures::makeJpeg(m_dir.path(), u"way.jpg"_s));
    const NodePtr movie = Fixtures::readNode(Fixtures::makeVideo(m_dir.path(), u"way.mov"_s));
    const NodePtr withXmp = Fixtures::readNode(Fixtures::makeJpeg(
        m_dir.path(), u"wayxmp.jpg"_s,
        {u"-GPSLatitude=10"_s, u"-GPSLatitudeRef=N"_s, u"-GPSLongitude=10"_s,
         u"-GPSLongitudeRef=E"_s, u"-XMP:GPSLatitude=10"_s, u"-XMP:GPSLongitude=10"_s}));
    QVERIFY(jpeg && movie && withXmp);
    QCOMPARE(jpeg->getIntValueSync(u"GPSDataAvailable"_s), 0);

    useNewModel();
    const QList<NodePtr> selection {jpeg, movie, withXmp};
    m_model->setSelectedNodes(selection);
    int announcements = 0;
    m_model->_selectedNodes->addColdListener([&](const QList<NodePtr> &) { ++announcements; });
    m_model->_pinnedLatitudeString->setValue(u"51.5"_s);
    m_model->_pinnedLongitudeString->setValue(u"-0.5"_s);

    DirectPendingWriteSink sink;
    PendingWriteSink::install(&sink);
    ChangeManager::applyCurrentPinnedGPSToCurrentSelection();
    // The interface shows the new position at once; the store still has the old one.
    QCOMPARE(m_model->gpsCoordinateComponent->_currentLongitudeInInterface->value(),
             u"-0.500000"_s);
    const bool done = TestSupport::waitUntil([&] { return announcements == 3; }, 60000);
    PendingWriteSink::install(nullptr);
    QVERIFY(done);
    QVERIFY(sink.failedPaths().isEmpty());

    MetadataStorage &store = MetadataStorage::shared();
    for (const NodePtr &node : selection) {
        const QString path = node->absolutePath;
        const auto latitude
            = store.getStringValue(path, u"GPSLatitude#"_s, MetadataSource::ExifToolGeneric);
        const auto longitude
            = store.getStringValue(path, u"GPSLongitude#"_s, MetadataSource::ExifToolGeneric);
        QVERIFY2(latitude && longitude, qPrintable(path));
        QCOMPARE(latitude->toDouble(), 51.5);
        // EXIF keeps the number unsigned and the direction in its reference.
        if (node == movie) {
            QCOMPARE(longitude->toDouble(), -0.5);
        } else {
            QCOMPARE(longitude->toDouble(), 0.5);
            QCOMPARE(
                store.getStringValue(path, u"GPSLongitudeRef"_s, MetadataSource::ExifToolGeneric),
                u"West"_s);
        }
        // Complete: both numbers, and the references where the type has them; no divergence.
        QCOMPARE(node->getIntValueSync(u"GPSDataAvailable"_s), 1);
    }
    QCOMPARE(store
                 .getStringValue(withXmp->absolutePath, u"XMPGPSLatitude#"_s,
                                 MetadataSource::ExifToolGeneric)
                 .value_or(QString())
                 .toDouble(),
             51.5);
}

QTEST_GUILESS_MAIN(tst_ChangeManager)
#include "tst_ChangeManager.moc"
