#include "acquisition/SpotlightHelper.h"
#include "acquisition/ValueText.h"

#include "ReaderFixtures.h"

using ReaderFixtures::dateOf;
using ReaderFixtures::mismatches;
using ReaderFixtures::stringOf;

#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

#include <sys/xattr.h>

using namespace Qt::StringLiterals;

class tst_SpotlightHelper : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void photoAttributesComeFromExifIptcAndThePixels();
    void videoAttributesComeFromTheMediaStreams();
    void audioDurationIsRoundedToOneDecimal();
    void extendedAttributesGiveWhereFromsAndComment();
    void numbersFollowTheirRoundingPolicy_data();
    void numbersFollowTheirRoundingPolicy();
    void durationsReadAsDaysHoursAndMinutes_data();
    void durationsReadAsDaysHoursAndMinutes();
    void missingFileGivesNothing();

private:
    QTemporaryDir m_dir;
};

void tst_SpotlightHelper::initTestCase()
{
    QVERIFY(m_dir.isValid());
}

void tst_SpotlightHelper::photoAttributesComeFromExifIptcAndThePixels()
{
    const QString jpeg = ReaderFixtures::jpegWithMetadata(m_dir.path());
    QVERIFY(!jpeg.isEmpty());
    const ExtractedValues values = SpotlightHelper::shared().extract(jpeg);

    QCOMPARE(
        mismatches(values,
                   "contenttype=image/jpeg|make=Canon|model=EOS R5|"
                   "lensmodel=RF24-105mm F4 L IS USM|colorspace=RGB|exifversion=2.32|"
                   "exifgpsversion=2.3.0.0|pixelwidth=64|pixelheight=48|pixelcount=3072|"
                   "resolutionwidthdpi=300|bitspersample=8|fnumber=2.8|exposuretimeseconds=0.008|"
                   "isospeed=200|focallength=50|exposureprogram=3|altitude=35|gpstrack=123.5|"
                   "timestamp=2024:05:01 10:34:56|city=Paris|stateorprovince=Ile-de-France|"
                   "country=France|namedlocation=Champ de Mars|headline=Tower at noon|"
                   "keywords=alpha, beta, gamma|authors=Ana|copyright=(c) Ana|duration=<absent>"),
        QString());
    // The index keeps signed coordinates and altitudes.
    QVERIFY(qAbs(stringOf(values, "latitude").toDouble() - 48.8584) < 1e-6);
    QVERIFY(qAbs(stringOf(values, "longitude").toDouble() + 2.2945) < 1e-6);

    const QDateTime taken(QDate(2024, 5, 1), QTime(12, 34, 56));
    QCOMPARE(dateOf(values, "contentcreationdate"), taken);
    QCOMPARE(SpotlightHelper::shared().getContentCreateDate(jpeg), taken);
    QCOMPARE(SpotlightHelper::shared().getItemCopyright(jpeg), std::optional<QString>("(c) Ana"));
    QCOMPARE(dateOf(values, "contentmodificationdate"), QFileInfo(jpeg).lastModified());

    // Tables in order: texts, lists, numbers, dates.
    const auto position = [&](const char *key) {
        return std::find_if(values.cbegin(), values.cend(),
                            [&](const auto &v) { return v.key == QLatin1String(key); })
            - values.cbegin();
    };
    QVERIFY(position("copyright") < position("timestamp"));
    QVERIFY(position("timestamp") < position("keywords"));
    QVERIFY(position("authors") < position("pixelheight"));
    QVERIFY(position("resolutionwidthdpi") < position("contentmodificationdate"));
}

void tst_SpotlightHelper::videoAttributesComeFromTheMediaStreams()
{
    const QString mp4 = ReaderFixtures::mp4WithLocation(m_dir.path());
    const QString mov = ReaderFixtures::movWithLocation(m_dir.path());
    QVERIFY(!mp4.isEmpty() && !mov.isEmpty());

    for (const QString &path : {mp4, mov}) {
        const ExtractedValues values = SpotlightHelper::shared().extract(path);
        QCOMPARE(mismatches(
                     values,
                     "duration=1.5|human_readable_duration=1 second|pixelwidth=160|pixelheight=120|"
                     "codecs=AVC, AAC|mediatypes=Video, Sound|title=Eiffel clip|authors=Ana|"
                     "copyright=(c) Ana|latitude=48.8584|longitude=2.2945"),
                 QString());
        QVERIFY(stringOf(values, "totalbitrate").toInt() > 0);
        QVERIFY(stringOf(values, "videobitrate").toInt() > 0);
        QVERIFY(stringOf(values, "audiobitrate").toInt() > 0);
    }
    QCOMPARE(SpotlightHelper::shared().getContentCreateDate(mp4),
             QDateTime(QDate(2024, 5, 1), QTime(10, 34, 56), QTimeZone::utc()));
    QCOMPARE(SpotlightHelper::shared().getItemCopyright(mp4), std::optional<QString>("(c) Ana"));
}

void tst_SpotlightHelper::audioDurationIsRoundedToOneDecimal()
{
    const QString wav = ReaderFixtures::wavWithId3(m_dir.path());
    const QString flac = ReaderFixtures::flacWithTitle(m_dir.path());
    QVERIFY(!wav.isEmpty() && !flac.isEmpty());

    const ExtractedValues values = SpotlightHelper::shared().extract(wav);
    // 1.25 s has two decimals; the tie goes to the even digit.
    QCOMPARE(mismatches(values,
                        "duration=1.2|human_readable_duration=1 second|bitspersample=16|"
                        "audiobitrate=128000|codecs=PCM|mediatypes=Sound|pixelwidth=<absent>"),
             QString());

    QCOMPARE(mismatches(SpotlightHelper::shared().extract(flac),
                        "codecs=FLAC|title=Flac tone|duration=1"),
             QString());
}

void tst_SpotlightHelper::extendedAttributesGiveWhereFromsAndComment()
{
    const QString path = m_dir.filePath("download.bin");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("payload");
    file.close();
    const QByteArray name = QFile::encodeName(path);
    const QByteArray origin = "https://example.org/files/download.bin";
    const QByteArray referrer = "https://example.org/files/";
    const QByteArray comment = "from the archive";
    if (::setxattr(name, "user.xdg.origin.url", origin.constData(), size_t(origin.size()), 0) != 0)
        QSKIP("this file system keeps no user extended attributes");
    QCOMPARE(
        ::setxattr(name, "user.xdg.referrer.url", referrer.constData(), size_t(referrer.size()), 0),
        0);
    QCOMPARE(::setxattr(name, "user.xdg.comment", comment.constData(), size_t(comment.size()), 0),
             0);

    const ExtractedValues values = SpotlightHelper::shared().extract(path);
    QCOMPARE(stringOf(values, "wherefroms"),
             "https://example.org/files/download.bin, https://example.org/files/");
    QCOMPARE(stringOf(values, "comment"), "from the archive");
    QVERIFY(dateOf(values, "downloadDate").isValid());
}

void tst_SpotlightHelper::numbersFollowTheirRoundingPolicy_data()
{
    QTest::addColumn<QString>("attribute");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("humanReadable");

    QTest::newRow("duration rounded, readable form from the unrounded seconds")
        << u"DurationSeconds"_s << QVariant(59.96) << u"duration"_s << u"60"_s << u"59 seconds"_s;
    QTest::newRow("duration of hours") << u"DurationSeconds"_s << QVariant(3725.25) << u"duration"_s
                                       << u"3725.2"_s << u"1 hour, 2 minutes"_s;
    QTest::newRow("tie below goes down to the even digit")
        << u"DurationSeconds"_s << QVariant(0.45) << u"duration"_s << u"0.4"_s << u"0 seconds"_s;
    QTest::newRow("above the tie goes up")
        << u"DurationSeconds"_s << QVariant(0.4501) << u"duration"_s << u"0.5"_s << u"0 seconds"_s;
    QTest::newRow("carry into the whole part")
        << u"DurationSeconds"_s << QVariant(9.96) << u"duration"_s << u"10"_s << u"9 seconds"_s;
    QTest::newRow("integer pixel height has no fraction")
        << u"PixelHeight"_s << QVariant(qint64(1080)) << u"pixelheight"_s << u"1080"_s
        << u"<absent>"_s;
    QTest::newRow("double is not rounded elsewhere")
        << u"FNumber"_s << QVariant(2.83) << u"fnumber"_s << u"2.83"_s << u"<absent>"_s;
    QTest::newRow("integer duration is stored without a readable form")
        << u"DurationSeconds"_s << QVariant(qint64(90)) << u"duration"_s << u"90"_s
        << u"<absent>"_s;
    QTest::newRow("text where a number belongs is skipped")
        << u"Latitude"_s << QVariant(QStringLiteral("48.1")) << u"latitude"_s << u"<absent>"_s
        << u"<absent>"_s;
    QTest::newRow("number where text belongs is skipped")
        << u"Title"_s << QVariant(qint64(12)) << u"title"_s << u"<absent>"_s << u"<absent>"_s;
}

void tst_SpotlightHelper::numbersFollowTheirRoundingPolicy()
{
    QFETCH(QString, attribute);
    QFETCH(QVariant, value);
    QFETCH(QString, key);
    QFETCH(QString, expected);
    QFETCH(QString, humanReadable);

    const ExtractedValues values
        = SpotlightHelper::shared().valuesFromAttributes({{attribute, value}});
    QCOMPARE(stringOf(values, key), expected);
    QCOMPARE(stringOf(values, "human_readable_duration"), humanReadable);
}

void tst_SpotlightHelper::durationsReadAsDaysHoursAndMinutes_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("expected");
    QTest::newRow("nothing") << 0.0 << u"0 seconds"_s;
    QTest::newRow("one second") << 1.9 << u"1 second"_s;
    QTest::newRow("one minute, seconds dropped") << 61.0 << u"1 minute"_s;
    QTest::newRow("one hour") << 3600.0 << u"1 hour"_s;
    QTest::newRow("all three") << 90061.0 << u"1 day, 1 hour, 1 minute"_s;
    QTest::newRow("plurals") << 2 * 86400.0 + 7200 + 180 << u"2 days, 2 hours, 3 minutes"_s;
    QTest::newRow("negative") << -5.0 << u"0 seconds"_s;
}

void tst_SpotlightHelper::durationsReadAsDaysHoursAndMinutes()
{
    QFETCH(double, seconds);
    QFETCH(QString, expected);
    QCOMPARE(ValueText::formatAsDaysAndHoursAndMinutes(seconds), expected);
}

void tst_SpotlightHelper::missingFileGivesNothing()
{
    const QString missing = m_dir.filePath("no-such-file.jpg");
    QVERIFY(SpotlightHelper::shared().extract(missing).isEmpty());
    QCOMPARE(SpotlightHelper::shared().getContentCreateDate(missing), ValueText::distantPast());
    QCOMPARE(SpotlightHelper::shared().getItemCopyright(missing), std::nullopt);
}

QTEST_GUILESS_MAIN(tst_SpotlightHelper)
#include "tst_SpotlightHelper.moc"
