#include "commons/Appcast.h"

#include <QTest>

class tst_Appcast : public QObject
{
    Q_OBJECT

private slots:
    void readsReleasesWhereverTheyKeepTheirVersion();
    void refusesWhatIsNotAFeed_data();
    void refusesWhatIsNotAFeed();
};

void tst_Appcast::readsReleasesWhereverTheyKeepTheirVersion()
{
    const Appcast appcast = Appcast::parse(R"xml(<?xml version="1.0" encoding="utf-8"?>
<rss version="2.0" xmlns:sparkle="urn:any:address" xmlns:dc="urn:dc">
  <channel>
    <title>Palomet</title>
    <item>
      <title>Palomet 1.10</title>
      <pubDate>Wed, 01 May 2024 10:00:00 +0000</pubDate>
      <description><![CDATA[<p>Faster <b>maps</b></p>]]></description>
      <enclosure url="https://downloads.invalid/palomet-1.10.tar.xz" length="100"
                 sparkle:version="1.10" sparkle:shortVersionString="1.10 (spring)"/>
    </item>
    <item>
      <title>Palomet 1.9</title>
      <link>https://palomet.invalid/releases/1.9</link>
      <sparkle:version>1.9</sparkle:version>
      <sparkle:releaseNotesLink>https://palomet.invalid/notes/1.9</sparkle:releaseNotesLink>
      <dc:creator>ignored</dc:creator>
    </item>
    <item><title>No version, left out</title></item>
    <item><title>Only a display version</title><sparkle:shortVersionString>0.5</sparkle:shortVersionString></item>
  </channel>
</rss>)xml");
    QVERIFY2(appcast.isValid(), qPrintable(appcast.errorString()));
    QCOMPARE(appcast.items.size(), 3);
    const AppcastItem newest = *appcast.newestItem();
    QCOMPARE(newest.version, QStringLiteral("1.10"));
    QCOMPARE(newest.displayVersion, QStringLiteral("1.10 (spring)"));
    QCOMPARE(newest.releaseNotes, QStringLiteral("<p>Faster <b>maps</b></p>"));
    QCOMPARE(newest.link, QStringLiteral("https://downloads.invalid/palomet-1.10.tar.xz"));
    QCOMPARE(newest.publicationDate, QDateTime(QDate(2024, 5, 1), QTime(10, 0), Qt::UTC));
    const AppcastItem &older = appcast.items.at(1);
    QCOMPARE(older.link, QStringLiteral("https://palomet.invalid/releases/1.9"));
    QCOMPARE(older.releaseNotesLink, QStringLiteral("https://palomet.invalid/notes/1.9"));
    QCOMPARE(appcast.items.at(2).version, QStringLiteral("0.5"));
}

void tst_Appcast::refusesWhatIsNotAFeed_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("reason");
    QTest::newRow("empty") << QByteArray() << "not XML";
    QTest::newRow("text") << QByteArray("Service unavailable") << "not XML";
    QTest::newRow("web page") << QByteArray("<html><body><rss/></body></html>")
                              << "not an RSS feed";
    QTest::newRow("cut off") << QByteArray("<rss><channel><item><title>1.0</title>")
                             << "not well-formed";
    QTest::newRow("undeclared prefix") << QByteArray(
        "<rss><channel><item><sparkle:version>2</sparkle:version></item></channel></rss>")
                                       << "not well-formed";
    QTest::newRow("no release") << QByteArray("<rss><channel><title>x</title></channel></rss>")
                                << "no release with a version";
}

void tst_Appcast::refusesWhatIsNotAFeed()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, reason);
    const Appcast appcast = Appcast::parse(data);
    QVERIFY(!appcast.isValid());
    QVERIFY2(appcast.errorString().startsWith(reason), qPrintable(appcast.errorString()));
    QVERIFY(!appcast.newestItem());
}

QTEST_APPLESS_MAIN(tst_Appcast)
#include "tst_Appcast.moc"
