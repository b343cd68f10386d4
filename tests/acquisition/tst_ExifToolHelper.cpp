#include "acquisition/ExifToolHelper.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_ExifToolHelper : public QObject
{
    Q_OBJECT

private slots:
    void listsAsShipped();
    void fileFormatSupported_data();
    void fileFormatSupported();
    void whiteListIsExtendedOnce();
    void statuses_data();
    void statuses();
};

void tst_ExifToolHelper::listsAsShipped()
{
    const ExifToolHelper &helper = ExifToolHelper::sharedInstance();
    QCOMPARE(helper.rawWhiteList(),
             QStringList({u"GPSLatitude#"_s, u"GPSLongitude#"_s, u"GPSAltitude#"_s}));
    QCOMPARE(QStringList(helper.whiteList()).removeDuplicates(), 0);
    const QStringList &formats = helper.supportedFileFormats();
    QCOMPARE(QStringList(formats).removeDuplicates(), 0);
    for (const QString &format : formats)
        QCOMPARE(format, format.toUpper());
    for (const QString &format : ExifToolHelper::quickTimeFamily())
        QVERIFY2(helper.fileFormatSupported(format), qPrintable(format));
}

void tst_ExifToolHelper::fileFormatSupported_data()
{
    QTest::addColumn<QString>("extension");
    QTest::addColumn<bool>("supported");
    QTest::addColumn<bool>("quickTime");

    QTest::newRow("jpg") << u"jpg"_s << true << false;
    QTest::newRow("mixed case heic") << u"HeIc"_s << true << false;
    QTest::newRow("mp4") << u"mp4"_s << true << true;
    QTest::newRow("m4a") << u"m4a"_s << true << true;
    QTest::newRow("mp3") << u"mp3"_s << true << false;
    QTest::newRow("dvr-ms") << u"dvr-ms"_s << true << false;
    QTest::newRow("txt") << u"txt"_s << false << false;
    QTest::newRow("empty") << QString() << false << false;
}

void tst_ExifToolHelper::fileFormatSupported()
{
    QFETCH(QString, extension);
    QFETCH(bool, supported);
    QFETCH(bool, quickTime);
    QCOMPARE(ExifToolHelper::sharedInstance().fileFormatSupported(extension), supported);
    QCOMPARE(ExifToolHelper::isQuickTimeFamily(extension), quickTime);
}

void tst_ExifToolHelper::whiteListIsExtendedOnce()
{
    ExifToolHelper &helper = ExifToolHelper::sharedInstance();
    const qsizetype shipped = helper.whiteList().size();
    helper.appendToWhiteList({u"GeolocationCity"_s, u"GeolocationCountry"_s});
    helper.appendToWhiteList({u"Later"_s});
    const QStringList whiteList = helper.whiteList();
    QCOMPARE(whiteList.mid(shipped), QStringList({u"GeolocationCity"_s, u"GeolocationCountry"_s}));
}

void tst_ExifToolHelper::statuses_data()
{
    QTest::addColumn<QString>("extension");
    // "Key=value" pairs of the file's generic ExifTool values.
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<int>("gpsStatus");
    QTest::addColumn<bool>("marker");
    QTest::addColumn<int>("iptcStatus");

    const QStringList position = {u"GPSLatitude#=48.85"_s, u"GPSLongitude#=2.29"_s};
    const QStringList references = {u"GPSLatitudeRef=North"_s, u"GPSLongitudeRef=East"_s};
    const QStringList place
        = {u"City=Paris"_s, u"Country=France"_s, u"Province-State=Ile-de-France"_s};
    // The plain cases (nothing, complete, divergent, a movie's signed pair, a complete place)
    // are read from real files in the ExifTool information test.

    QTest::newRow("JPEG without references") << u"jpg"_s << position << 2 << false << 0;
    QTest::newRow("JPEG with a reference only")
        << u"JPG"_s << QStringList {u"GPSLatitudeRef=North"_s} << 2 << false << 0;
    QTest::newRow("MP4 with one half") << u"MP4"_s << position.mid(0, 1) << 2 << false << 0;
    QTest::newRow("MP4 ignores lone references") << u"mov"_s << references << 0 << false << 0;
    QTest::newRow("divergent without any position")
        << u"jpg"_s << QStringList {u"GPSDivergent=1"_s} << 3 << false << 0;
    QTest::newRow("a flag other than 1 is no divergence")
        << u"jpg"_s << QStringList {u"GPSDivergent=yes"_s, u"CityDivergent=0"_s} << 0 << false << 0;
    QTest::newRow("sub-location only")
        << u"jpg"_s << QStringList {u"Sub-location=Montmartre"_s} << 0 << false << 2;
    QTest::newRow("city and country only") << u"jpg"_s << place.mid(0, 2) << 0 << false << 2;
    QTest::newRow("IPTC divergent")
        << u"jpg"_s << place + QStringList {u"SublocationDivergent=1"_s} << 0 << false << 3;
}

void tst_ExifToolHelper::statuses()
{
    QFETCH(QString, extension);
    QFETCH(QStringList, values);
    QFETCH(int, gpsStatus);
    QFETCH(bool, marker);
    QFETCH(int, iptcStatus);

    const ExifToolHelper::KeyLookup valueOf = [&](const QString &key) -> std::optional<QString> {
        for (const QString &pair : values) {
            if (pair.section(u'=', 0, 0) == key)
                return pair.section(u'=', 1);
        }
        return std::nullopt;
    };
    const ExifToolHelper::GPSStatusDecision gps
        = ExifToolHelper::decideGPSStatus(extension, valueOf);
    QCOMPARE(int(gps.status), gpsStatus);
    QCOMPARE(gps.addsMarker, marker);
    QCOMPARE(int(ExifToolHelper::decideIPTCStatus(valueOf)), iptcStatus);
}

QTEST_GUILESS_MAIN(tst_ExifToolHelper)
#include "tst_ExifToolHelper.moc"
