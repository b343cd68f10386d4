#include "acquisition/AVKitHelper.h"
#include "acquisition/ImageIOHelper.h"
#include "acquisition/SpotlightHelper.h"
#include "metadata/MetadataStorage.h"

#include "ReaderFixtures.h"

#include <QTemporaryDir>
#include <QTest>

// The readers' values reach the store under their own source and nowhere else.
class tst_PlatformReaderStoring : public QObject
{
    Q_OBJECT

private slots:
    void valuesAreStoredUnderTheReadersSource();
};

void tst_PlatformReaderStoring::valuesAreStoredUnderTheReadersSource()
{
    QTemporaryDir dir;
    const QString jpeg = ReaderFixtures::jpegWithMetadata(dir.path());
    const QString mp4 = ReaderFixtures::mp4WithLocation(dir.path());
    QVERIFY(!jpeg.isEmpty() && !mp4.isEmpty());
    MetadataStorage &storage = MetadataStorage::shared();

    const qint64 before = storage.itemCounter();
    ImageIOHelper::shared().retrieveAndStoreAllTagsFor(jpeg);
    QCOMPARE(storage.getStringValue(jpeg, "iptc_keywords", MetadataSource::ImageIO),
             std::optional<QString>("alpha, beta, gamma"));
    QCOMPARE(storage.getWrappedValue(jpeg, "exif_date_time_original", MetadataSource::ImageIO),
             WrappedMetaDataValue::date(QDateTime(QDate(2024, 5, 1), QTime(12, 34, 56))));
    QCOMPARE(storage.itemCounter() - before, ImageIOHelper::shared().extract(jpeg).size());

    SpotlightHelper::shared().retrieveAndStoreAllTagsFor(mp4);
    AVKitHelper::shared().retrieveAndStoreAllTagsFor(mp4);
    QCOMPARE(storage.getStringValue(mp4, "duration", MetadataSource::Spotlight),
             std::optional<QString>("1.5"));
    QCOMPARE(storage.getStringValue(mp4, "av_title", MetadataSource::AVKit),
             std::optional<QString>("Eiffel clip"));
    QCOMPARE(storage.getStringValue(mp4, "av_title", MetadataSource::Spotlight), std::nullopt);
    QCOMPARE(storage.getStringValue(jpeg, "iptc_keywords", MetadataSource::Spotlight),
             std::nullopt);
}

QTEST_GUILESS_MAIN(tst_PlatformReaderStoring)
#include "tst_PlatformReaderStoring.moc"
