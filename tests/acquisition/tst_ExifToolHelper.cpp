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
};

void tst_ExifToolHelper::listsAsShipped()
{
    const ExifToolHelper &helper = ExifToolHelper::sharedInstance();
    QCOMPARE(helper.rawWhiteList(),
             QStringList({u"GPSLatitude#"_s, u"GPSLongitude#"_s, u"GPSAltitude#"_s}));
    const QStringList whiteList = helper.whiteList();
    QCOMPARE(whiteList.size(), 40);
    QCOMPARE(whiteList.first(), u"Composite:SubSecDateTimeOriginal"_s);
    QCOMPARE(whiteList.last(), u"Country"_s);
    QCOMPARE(QStringList(whiteList).removeDuplicates(), 0);

    const QStringList &formats = helper.supportedFileFormats();
    QCOMPARE(formats.size(), 289);
    QCOMPARE(QStringList(formats).removeDuplicates(), 0);
    for (const QString &format : formats)
        QCOMPARE(format, format.toUpper());
    QCOMPARE(ExifToolHelper::quickTimeFamily().size(), 16);
    for (const QString &format : ExifToolHelper::quickTimeFamily())
        QVERIFY2(helper.fileFormatSupported(format), qPrintable(format));
}

void tst_ExifToolHelper::fileFormatSupported_data()
{
    QTest::addColumn<QString>("extension");
    QTest::addColumn<bool>("supported");
    QTest::addColumn<bool>("quickTime");

    QTest::newRow("jpg") << u"jpg"_s << true << false;
    QTest::newRow("JPEG") << u"JPEG"_s << true << false;
    QTest::newRow("mixed case heic") << u"HeIc"_s << true << false;
    QTest::newRow("mp4") << u"mp4"_s << true << true;
    QTest::newRow("qtif") << u"qtif"_s << true << true;
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
    helper.appendToWhiteList({u"GeolocationCity"_s, u"GeolocationCountry"_s});
    helper.appendToWhiteList({u"Later"_s});
    const QStringList whiteList = helper.whiteList();
    QCOMPARE(whiteList.size(), 42);
    QCOMPARE(whiteList.mid(40), QStringList({u"GeolocationCity"_s, u"GeolocationCountry"_s}));
}

QTEST_GUILESS_MAIN(tst_ExifToolHelper)
#include "tst_ExifToolHelper.moc"
