#include "acquisition/ExifToolHelper.h"
#include "acquisition/ModernExifExtraction.h"
#include "metadata/MetadataStorage.h"

#include "Fixtures.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

// ExifTool values reaching the store: by source, once per file, unsupported files only marked.
class tst_ExifToolStore : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void storesTagsBySource();
    void readsEachFileOnce();
    void unsupportedFileIsMarkedNotRead();

private:
    QTemporaryDir m_directory;
    QString m_photo;
};

void tst_ExifToolStore::initTestCase()
{
    ExifToolHelper::sharedInstance().appendToWhiteList(
        {u"GeolocationCity"_s, u"GeolocationCountry"_s, u"GeolocationRegion"_s,
         u"GeolocationSubregion"_s, u"GeolocationFeatureCode"_s});
    m_photo = Fixtures::makeJpeg(
        m_directory.path(), u"photo.jpg"_s,
        {u"-GPSLatitude=21.292"_s, u"-GPSLatitudeRef=N"_s, u"-GPSLongitude=157.8426"_s,
         u"-GPSLongitudeRef=W"_s, u"-IPTC:City=Honolulu"_s,
         u"-DateTimeOriginal=2021:07:04 12:30:15"_s, u"-SubSecTimeOriginal=25"_s});
}

void tst_ExifToolStore::storesTagsBySource()
{
    MetadataStorage &storage = MetadataStorage::shared();
    ExifToolHelper::sharedInstance().obtainMetaDataFor(m_photo, true);
    QVERIFY(storage.boolValueExistsAndIsTrue(m_photo, u"retrieved"_s, MetadataSource::Computed));
    const auto generic = [&](const QString &key) {
        return storage.getStringValue(m_photo, key, MetadataSource::ExifToolGeneric);
    };
    QCOMPARE(generic(u"GPSLatitude#"_s), u"21.292"_s);
    QCOMPARE(generic(u"GPSLongitudeRef"_s), u"West"_s);
    QCOMPARE(generic(u"City"_s), u"Honolulu"_s);
    QCOMPARE(generic(u"computedCity"_s), u"Honolulu"_s);
    QCOMPARE(generic(u"computedSublocation"_s), u"Ala Moana"_s);
    QCOMPARE(
        storage.getStringValue(m_photo, u"SubSecDateTimeOriginal"_s, MetadataSource::Composite),
        u"2021:07:04 12:30:15.25"_s);
    QVERIFY(!ModernExifExtraction::shared().whiteList.isEmpty());
}

void tst_ExifToolStore::readsEachFileOnce()
{
    MetadataStorage &storage = MetadataStorage::shared();
    ExifToolHelper::sharedInstance().obtainMetaDataFor(m_photo, true);
    // The mark stays and the values are not read again.
    storage.store(m_photo, MetadataSource::ExifToolGeneric, u"City"_s, u"changed"_s);
    ExifToolHelper::sharedInstance().obtainMetaDataFor(m_photo, true);
    QCOMPARE(storage.getStringValue(m_photo, u"City"_s, MetadataSource::ExifToolGeneric),
             u"changed"_s);
}

void tst_ExifToolStore::unsupportedFileIsMarkedNotRead()
{
    MetadataStorage &storage = MetadataStorage::shared();
    const QString notes = Fixtures::makeFile(m_directory.path(), u"notes.txt"_s, "City: Paris\n");
    ExifToolHelper::sharedInstance().obtainMetaDataFor(notes, true);
    QVERIFY(storage.boolValueExistsAndIsTrue(notes, u"retrieved"_s, MetadataSource::Computed));
    QVERIFY(storage.getKeysForAllAvailableStringValues(notes, MetadataSource::ExifToolGeneric)
                .isEmpty());
}

QTEST_GUILESS_MAIN(tst_ExifToolStore)
#include "tst_ExifToolStore.moc"
