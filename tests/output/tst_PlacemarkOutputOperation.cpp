#include "output/GPXOutputOperation.h"
#include "output/KMLOutputOperation.h"

#include "Fixtures.h"
#include "OutputFixture.h"
#include "TestSupport.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

// KML and GPX over real list items: positions, place names and times as the ExifTool reader
// stores them, the results checked against the formats' schemas with xmllint.
class tst_PlacemarkOutputOperation : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void formats_data();
    void formats();
    void cancelledRunDeliversNothing();

private:
    FlatFileListPtr list();
    // xmllint's verdict on text against a schema shipped with the tests; empty when valid.
    QString schemaErrors(const QString &text, const QString &schema);

    OutputFixture m_fixture;
};

void tst_PlacemarkOutputOperation::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    qputenv("TZ", "Europe/Paris");
}

FlatFileListPtr tst_PlacemarkOutputOperation::list()
{
    // Three items with positions in list order b, a, c by name; one without.
    const NodePtr later = m_fixture.file(u"b-later.jpg"_s);
    m_fixture.store(later, u"GPSLatitude#"_s, u"33.856"_s);
    m_fixture.store(later, u"GPSLatitudeRef"_s, u"South"_s);
    m_fixture.store(later, u"GPSLongitude#"_s, u"151.215"_s);
    m_fixture.store(later, u"GPSLongitudeRef"_s, u"East"_s);
    m_fixture.store(later, u"City"_s, u"Sydney"_s);
    m_fixture.store(later, u"Country"_s, u"Australia"_s);
    m_fixture.store(later, u"DateTimeOriginal"_s, u"2024:05:02 10:00:00"_s);
    m_fixture.store(later, u"OffsetTimeOriginal"_s, u"+10:00"_s);

    const NodePtr earlier = m_fixture.file(u"a <R&D> \"1\".jpg"_s);
    m_fixture.store(earlier, u"GPSLatitude#"_s, u"48.8583"_s);
    m_fixture.store(earlier, u"GPSLatitudeRef"_s, u"North"_s);
    m_fixture.store(earlier, u"GPSLongitude#"_s, u"2.2944"_s);
    m_fixture.store(earlier, u"GPSLongitudeRef"_s, u"East"_s);
    m_fixture.store(earlier, u"GPSAltitude#"_s, u"35.4"_s);
    m_fixture.store(earlier, u"GPSAltitudeRef"_s, u"Above Sea Level"_s);
    m_fixture.store(earlier, u"Sub-location"_s, u"Champ de Mars"_s);
    m_fixture.store(earlier, u"City"_s,
                    u"Paris & \x01"
                    u"environs"_s);
    m_fixture.store(earlier, u"Province-State"_s, u"Île-de-France"_s);
    m_fixture.store(earlier, u"Country"_s, u"France"_s);
    m_fixture.store(earlier, u"DateTimeOriginal"_s, u"2024:05:01 10:05:00"_s); // Paris time

    const NodePtr untimed = m_fixture.file(u"c-untimed.mov"_s);
    m_fixture.store(untimed, u"GPSLatitude#"_s, u"-22.9"_s);
    m_fixture.store(untimed, u"GPSLongitude#"_s, u"-43.2"_s);

    const NodePtr nowhere = m_fixture.file(u"d-nowhere.jpg"_s);
    m_fixture.store(nowhere, u"City"_s, u"Lost"_s);
    m_fixture.store(nowhere, u"GPSLatitude#"_s, u"abc"_s);
    m_fixture.store(nowhere, u"GPSLongitude#"_s, u"2"_s);
    return OutputFixture::list({later, earlier, untimed, nowhere});
}

QString tst_PlacemarkOutputOperation::schemaErrors(const QString &text, const QString &schema)
{
    const QString file = m_fixture.path() + u"/checked.xml"_s;
    QFile out(file);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return u"cannot write"_s;
    out.write(text.toUtf8());
    out.close();
    QByteArray output;
    const bool valid = Fixtures::run(
        u"xmllint"_s,
        {u"--noout"_s, u"--schema"_s, QStringLiteral(PALOMET_TEST_SCHEMAS "/") + schema, file},
        &output);
    return valid ? QString() : QString::fromUtf8(output);
}

void tst_PlacemarkOutputOperation::formats_data()
{
    QTest::addColumn<bool>("gpx");
    QTest::addColumn<QStringList>("expected"); // fragments, in this order
    QTest::newRow("KML, in list order")
        << false
        << QStringList {
               u"<kml xmlns=\"http://www.opengis.net/kml/2.2\">"_s,
               u"<name>b-later.jpg</name>\n\t\t\t<description>City: Sydney\nCountry: "
               "Australia</description>\n\t\t\t<TimeStamp><when>2024-05-02T00:00:00Z</when>"_s,
               u"<coordinates>151.215000,-33.856000</coordinates>"_s,
               u"<name>a &lt;R&amp;D&gt; &quot;1&quot;.jpg</name>"_s,
               u"<description>Sub-location: Champ de Mars\nCity: Paris &amp; environs\n"
               "Province/State: Île-de-France\nCountry: France</description>"_s,
               u"<when>2024-05-01T08:05:00Z</when>"_s,
               u"<altitudeMode>absolute</altitudeMode>\n\t\t\t\t<coordinates>2.294400,48.858300,"
               "35.4</coordinates>"_s,
               u"<name>c-untimed.mov</name>\n\t\t\t<Point>\n\t\t\t\t<coordinates>-43.200000,"
               "-22.900000</coordinates>"_s,
           };
    QTest::newRow("GPX, by time taken")
        << true
        << QStringList {
               u"<gpx version=\"1.1\" creator=\"Palomet\""_s,
               u"<wpt lat=\"48.858300\" lon=\"2.294400\">\n\t\t<ele>35.4</ele>\n\t\t<time>"
               "2024-05-01T08:05:00Z</time>\n\t\t<name>a &lt;R&amp;D&gt; &quot;1&quot;.jpg</name>"_s,
               u"<wpt lat=\"-33.856000\" lon=\"151.215000\">\n\t\t<time>2024-05-02T00:00:00Z"
               "</time>\n\t\t<name>b-later.jpg</name>\n\t\t<desc>City: Sydney\nCountry: "
               "Australia</desc>"_s,
               u"<wpt lat=\"-22.900000\" lon=\"-43.200000\">\n\t\t<name>c-untimed.mov</name>\n"
               "\t</wpt>\n</gpx>\n"_s,
           };
}

void tst_PlacemarkOutputOperation::formats()
{
    QFETCH(bool, gpx);
    QFETCH(QStringList, expected);
    DataModelSnapshot snapshot;
    snapshot.outputFormat = gpx ? OutputFormatIndexEnum::GPX : OutputFormatIndexEnum::KML;
    const std::optional<QString> text = gpx
        ? OutputFixture::run<GPXOutputOperation>(snapshot, list())
        : OutputFixture::run<KMLOutputOperation>(snapshot, list());
    QVERIFY(text);
    qsizetype from = 0;
    for (const QString &fragment : expected) {
        const qsizetype at = text->indexOf(fragment, from);
        QVERIFY2(at >= 0, qPrintable(u"missing or out of order: "_s + fragment + u"\n"_s + *text));
        from = at + fragment.size();
    }
    QVERIFY(!text->contains(u"nowhere"_s));
    const QString errors = schemaErrors(*text, gpx ? u"gpx11.xsd"_s : u"kml22.xsd"_s);
    QVERIFY2(errors.isEmpty(), qPrintable(errors));
}

void tst_PlacemarkOutputOperation::cancelledRunDeliversNothing()
{
    DataModelSnapshot snapshot;
    QVERIFY(!OutputFixture::run<KMLOutputOperation>(snapshot, list(), true));
    // An empty list is still a valid document.
    const auto empty = OutputFixture::run<GPXOutputOperation>(snapshot, OutputFixture::list({}));
    QVERIFY(empty);
    QVERIFY2(schemaErrors(*empty, u"gpx11.xsd"_s).isEmpty(), qPrintable(*empty));
}

QTEST_GUILESS_MAIN(tst_PlacemarkOutputOperation)
#include "tst_PlacemarkOutputOperation.moc"
