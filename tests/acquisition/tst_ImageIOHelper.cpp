#include "acquisition/ImageIOHelper.h"

#include "Fixtures.h"
#include "ReaderFixtures.h"

using ReaderFixtures::mismatches;
using ReaderFixtures::stringOf;

#include <QTemporaryDir>
#include <QTest>

#include <exiv2/exiv2.hpp>

class tst_ImageIOHelper : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
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

void tst_ImageIOHelper::jpegValuesComeInTheFormOfThePlatformDictionaries()
{
    const ExtractedValues values = ImageIOHelper::shared().extract(m_jpeg);

    // Rationals become decimal numbers, single bytes numbers; lists of numbers (ISO ratings,
    // versions) are neither numbers nor texts and are not stored. GPS positions come as
    // unsigned degrees beside their reference letters.
    QCOMPARE(mismatches(values,
                        "image_pixel_width=64|image_pixel_height=48|image_depth=8|"
                        "image_has_alpha=0|image_dpi_width=300|exif_exposure_time=0.008|"
                        "exif_f_number=2.8|exif_focal_length=50|exif_exposure_program=3|"
                        "exif_user_comment=Taken from the tower|"
                        "exif_iso_speed_ratings=<absent>|exif_version=<absent>|"
                        "gps_version=<absent>|iptc_keywords=alpha, beta, gamma|iptc_city=Paris|"
                        "iptc_province_state=Ile-de-France|iptc_primary_location_name=France|"
                        "iptc_sub_location=Champ de Mars|iptc_creator=Ana|"
                        "iptc_date_created=20240501|iptc_time_created=123456+0200|"
                        "gps_latitude_ref=N|gps_longitude_ref=W|gps_altitude=35|"
                        "gps_altitude_ref=0|gps_time_stamp=10:34:56|gps_date_stamp=2024:05:01|"
                        "gps_track=123.5|tiff_make=Canon|tiff_model=EOS R5"),
             QString());
    QVERIFY(qAbs(stringOf(values, "gps_latitude").toDouble() - 48.8584) < 1e-6);
    QVERIFY(qAbs(stringOf(values, "gps_longitude").toDouble() - 2.2945) < 1e-6);

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
    QCOMPARE(mismatches(pngValues,
                        "image_pixel_width=32|image_pixel_height=16|image_has_alpha=1|"
                        "image_depth=8|image_dpi_width=150"),
             QString());

    const ExtractedValues tiffValues = ImageIOHelper::shared().extract(tiff);
    QCOMPARE(mismatches(tiffValues,
                        "image_pixel_width=40|image_pixel_height=30|image_depth=16|"
                        "tiff_make=Nikon|tiff_model=Coolscan"),
             QString());
}

void tst_ImageIOHelper::embeddedProfileGivesItsName()
{
    const QString jpeg = ReaderFixtures::jpegWithMetadata(m_dir.path(), "profiled.jpg");
    QFile icc(m_dir.filePath("test.icc"));
    QVERIFY(icc.open(QIODevice::WriteOnly));
    icc.write(ReaderFixtures::iccProfile("Palomet Test RGB"));
    icc.close();
    QVERIFY(Fixtures::writeTags(jpeg, {"-ICC_Profile<=" + icc.fileName()}));

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
