#include "acquisition/ImageIOHelper.h"

#include "ReaderFixtures.h"

using ReaderFixtures::stringOf;

#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <exiv2/exiv2.hpp>

class tst_ImageIOHelper : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void tablesHoldEveryKeyOnceWithItsTransformation();
    void jpegValuesComeInTheFormOfThePlatformDictionaries();
    void jpegValuesAreStoredDictionaryByDictionary();
    void pngWithAlphaAndTiffGiveTheirPixelProperties();
    void embeddedProfileGivesItsName();
    void dateInAnotherFormatIsNotStored();
    void typesOutsideTheListStoreNothing_data();
    void typesOutsideTheListStoreNothing();

private:
    QTemporaryDir m_dir;
    QString m_jpeg;
};

void tst_ImageIOHelper::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_jpeg = ReaderFixtures::jpegWithMetadata(m_dir.path());
    QVERIFY(!m_jpeg.isEmpty());
}

void tst_ImageIOHelper::tablesHoldEveryKeyOnceWithItsTransformation()
{
    const auto &helper = ImageIOHelper::shared();
    const QList<const ImageIOHelper::ExtractionModel *> tables
        = {&helper.imageMetadataExtractionModel, &helper.gpsMetadataExtractionModel,
           &helper.iptcMetadataExtractionModel, &helper.tiffMetadataExtractionModel,
           &helper.exifMetadataExtractionModel};
    QSet<QString> tags;
    QList<int> sizes;
    int rows = 0;
    int integers = 0;
    int dates = 0;
    for (const auto *table : tables) {
        sizes << int(table->size());
        for (const auto &[key, instruction] : *table) {
            ++rows;
            tags.insert(instruction.tag);
            integers += instruction.transformation == ImageIOHelper::Transformation::integer;
            dates += instruction.transformation == ImageIOHelper::Transformation::date;
        }
    }
    QCOMPARE(sizes, QList<int>({7, 32, 59, 2, 44}));
    QCOMPARE(tags.size(), rows);
    QCOMPARE(integers, 6);
    QCOMPARE(dates, 2);
    QCOMPARE(helper.supportedFileTypes.last(), QStringLiteral("m4b"));
    QVERIFY(helper.supportedFileTypes.contains(QStringLiteral("jpg")));
}

void tst_ImageIOHelper::jpegValuesComeInTheFormOfThePlatformDictionaries()
{
    const ExtractedValues values = ImageIOHelper::shared().extract(m_jpeg);

    QCOMPARE(stringOf(values, "image_pixel_width"), "64");
    QCOMPARE(stringOf(values, "image_pixel_height"), "48");
    QCOMPARE(stringOf(values, "image_depth"), "8");
    QCOMPARE(stringOf(values, "image_has_alpha"), "0");
    QCOMPARE(stringOf(values, "image_dpi_width"), "300");
    // Rationals become decimal numbers, single bytes numbers.
    QCOMPARE(stringOf(values, "exif_exposure_time"), "0.008");
    QCOMPARE(stringOf(values, "exif_f_number"), "2.8");
    QCOMPARE(stringOf(values, "exif_focal_length"), "50");
    QCOMPARE(stringOf(values, "exif_exposure_program"), "3");
    QCOMPARE(stringOf(values, "exif_user_comment"), "Taken from the tower");
    // Lists of numbers (ISO ratings, versions) are neither numbers nor texts: not stored.
    QCOMPARE(stringOf(values, "exif_iso_speed_ratings"), "<absent>");
    QCOMPARE(stringOf(values, "exif_version"), "<absent>");
    QCOMPARE(stringOf(values, "gps_version"), "<absent>");

    QCOMPARE(stringOf(values, "iptc_keywords"), "alpha, beta, gamma");
    QCOMPARE(stringOf(values, "iptc_city"), "Paris");
    QCOMPARE(stringOf(values, "iptc_province_state"), "Ile-de-France");
    QCOMPARE(stringOf(values, "iptc_primary_location_name"), "France");
    QCOMPARE(stringOf(values, "iptc_sub_location"), "Champ de Mars");
    QCOMPARE(stringOf(values, "iptc_creator"), "Ana");
    QCOMPARE(stringOf(values, "iptc_date_created"), "20240501");
    QCOMPARE(stringOf(values, "iptc_time_created"), "123456+0200");

    // GPS positions as unsigned degrees beside their reference letters.
    QCOMPARE(stringOf(values, "gps_latitude_ref"), "N");
    QCOMPARE(stringOf(values, "gps_longitude_ref"), "W");
    QVERIFY(qAbs(stringOf(values, "gps_latitude").toDouble() - 48.8584) < 1e-6);
    QVERIFY(qAbs(stringOf(values, "gps_longitude").toDouble() - 2.2945) < 1e-6);
    QCOMPARE(stringOf(values, "gps_altitude"), "35");
    QCOMPARE(stringOf(values, "gps_altitude_ref"), "0");
    QCOMPARE(stringOf(values, "gps_time_stamp"), "10:34:56");
    QCOMPARE(stringOf(values, "gps_date_stamp"), "2024:05:01");
    QCOMPARE(stringOf(values, "gps_track"), "123.5");

    QCOMPARE(stringOf(values, "tiff_make"), "Canon");
    QCOMPARE(stringOf(values, "tiff_model"), "EOS R5");

    const auto original = std::find_if(values.cbegin(), values.cend(), [](const auto &v) {
        return v.key == QLatin1String("exif_date_time_original");
    });
    QVERIFY(original != values.cend());
    QCOMPARE(original->value.kind(), WrappedMetaDataValue::Kind::DateValue);
    QCOMPARE(original->value.dateValue(), QDateTime(QDate(2024, 5, 1), QTime(12, 34, 56)));
}

void tst_ImageIOHelper::jpegValuesAreStoredDictionaryByDictionary()
{
    const ExtractedValues values = ImageIOHelper::shared().extract(m_jpeg);
    QString order;
    for (const auto &value : values) {
        const QChar group = value.key.startsWith(QLatin1String("image_")) ? QLatin1Char('i')
            : value.key.startsWith(QLatin1String("exif_"))                ? QLatin1Char('e')
            : value.key.startsWith(QLatin1String("iptc_"))                ? QLatin1Char('p')
            : value.key.startsWith(QLatin1String("gps_"))                 ? QLatin1Char('g')
                                                                          : QLatin1Char('t');
        if (!order.endsWith(group))
            order += group;
    }
    QCOMPARE(order, QStringLiteral("iepgt"));
}

void tst_ImageIOHelper::pngWithAlphaAndTiffGiveTheirPixelProperties()
{
    const QString png = ReaderFixtures::pngWithAlpha(m_dir.path());
    const QString tiff = ReaderFixtures::tiffWithCamera(m_dir.path());
    QVERIFY(!png.isEmpty() && !tiff.isEmpty());

    const ExtractedValues pngValues = ImageIOHelper::shared().extract(png);
    QCOMPARE(stringOf(pngValues, "image_pixel_width"), "32");
    QCOMPARE(stringOf(pngValues, "image_pixel_height"), "16");
    QCOMPARE(stringOf(pngValues, "image_has_alpha"), "1");
    QCOMPARE(stringOf(pngValues, "image_depth"), "8");
    QCOMPARE(stringOf(pngValues, "image_dpi_width"), "150");

    const ExtractedValues tiffValues = ImageIOHelper::shared().extract(tiff);
    QCOMPARE(stringOf(tiffValues, "image_pixel_width"), "40");
    QCOMPARE(stringOf(tiffValues, "image_pixel_height"), "30");
    QCOMPARE(stringOf(tiffValues, "image_depth"), "16");
    QCOMPARE(stringOf(tiffValues, "tiff_make"), "Nikon");
    QCOMPARE(stringOf(tiffValues, "tiff_model"), "Coolscan");
}

void tst_ImageIOHelper::embeddedProfileGivesItsName()
{
    const QString jpeg = ReaderFixtures::jpegWithMetadata(m_dir.path(), "profiled.jpg");
    QFile icc(m_dir.filePath("test.icc"));
    QVERIFY(icc.open(QIODevice::WriteOnly));
    icc.write(ReaderFixtures::iccProfile("Palomet Test RGB"));
    icc.close();
    QVERIFY(ReaderFixtures::exiftool({"-ICC_Profile<=" + icc.fileName(), jpeg}));

    QCOMPARE(stringOf(ImageIOHelper::shared().extract(jpeg), "image_profile_name"),
             "Palomet Test RGB");
}

void tst_ImageIOHelper::dateInAnotherFormatIsNotStored()
{
    const QString jpeg = ReaderFixtures::jpegWithMetadata(m_dir.path(), "odd-date.jpg");
    {
        auto image = Exiv2::ImageFactory::open(QFile::encodeName(jpeg).toStdString());
        image->readMetadata();
        image->exifData()["Exif.Photo.DateTimeOriginal"] = std::string("2024-05-01T12:34:56");
        image->writeMetadata();
    }
    const ExtractedValues values = ImageIOHelper::shared().extract(jpeg);
    QCOMPARE(stringOf(values, "exif_date_time_original"), "<absent>");
    // The rest of the file is read as before.
    QCOMPARE(stringOf(values, "iptc_keywords"), "alpha, beta, gamma");
}

void tst_ImageIOHelper::typesOutsideTheListStoreNothing_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("text extension") << "photo.txt";
    QTest::newRow("video extension") << "photo.mp4";
    QTest::newRow("no extension") << "photo";
}

void tst_ImageIOHelper::typesOutsideTheListStoreNothing()
{
    QFETCH(QString, name);
    // A real JPEG under a name outside the list.
    const QString path = m_dir.filePath(name);
    QFile::remove(path);
    QVERIFY(QFile::copy(m_jpeg, path));
    QVERIFY(ImageIOHelper::shared().extract(path).isEmpty());
    // The same bytes with an upper-case listed extension are read.
    const QString upper = m_dir.filePath(name + ".JPG");
    QFile::remove(upper);
    QVERIFY(QFile::copy(m_jpeg, upper));
    QVERIFY(!ImageIOHelper::shared().extract(upper).isEmpty());
}

QTEST_GUILESS_MAIN(tst_ImageIOHelper)
#include "tst_ImageIOHelper.moc"
