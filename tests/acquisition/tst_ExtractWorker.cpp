#include "acquisition/ExifToolHelper.h"
#include "acquisition/ExifToolProcess.h"
#include "acquisition/ExifToolResponseParser.h"
#include "platform/Resources.h"

#include "Fixtures.h"
#include "TestSupport.h"

#include <QDir>
#include <QHash>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <memory>

using namespace Qt::StringLiterals;

// The read worker, extract.pl, on real files: what each key holds, and that bad files still get
// a complete answer.
class tst_ExtractWorker : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void keys_data();
    void keys();
    void trackNumbers_data();
    void trackNumbers();
    void badFilesGetCompleteAnswers_data();
    void badFilesGetCompleteAnswers();
    void groupedTagsLandAtTheirSource();
    void answersDoNotDependOnEarlierFiles();
    void usesTheResourceExifTool();
    void exitsAtEndOfInput();

private:
    QHash<QString, QString> genericValues(ExifToolProcess &process, const QString &path);

    QTemporaryDir m_directory;
    QHash<QString, QString> m_files;
    std::unique_ptr<ExifToolProcess> m_worker;
};

namespace {

// The lists the application starts its worker with.
QStringList applicationWhiteList()
{
    return ExifToolHelper::sharedInstance().whiteList()
        + QStringList {u"GeolocationCity"_s, u"GeolocationCountry"_s, u"GeolocationRegion"_s,
                       u"GeolocationSubregion"_s, u"GeolocationFeatureCode"_s};
}

// "Key=value" expectations written as one text, separated by '|'.
QStringList expect(const char *text)
{
    return QString::fromUtf8(text).split(u'|');
}

const QStringList northEast = {u"-GPSLatitude=48.8583"_s, u"-GPSLatitudeRef=N"_s,
                               u"-GPSLongitude=2.2944"_s, u"-GPSLongitudeRef=E"_s};
const QStringList southWest = {u"-GPSLatitude=33.8688"_s, u"-GPSLatitudeRef=S"_s,
                               u"-GPSLongitude=70.6693"_s, u"-GPSLongitudeRef=W"_s};

} // namespace

void tst_ExtractWorker::initTestCase()
{
    const QString dir = m_directory.path();
    m_files[u"north-east"_s] = Fixtures::makeJpeg(
        dir, u"north-east.jpg"_s,
        northEast + QStringList {u"-GPSAltitude=35"_s, u"-GPSAltitudeRef=0"_s});
    m_files[u"south-west"_s] = Fixtures::makeJpeg(dir, u"south-west.jpg"_s, southWest);
    m_files[u"iptc"_s] = Fixtures::makeJpeg(
        dir, u"iptc.jpg"_s,
        {u"-IPTC:CodedCharacterSet=UTF8"_s, u"-IPTC:City=Lyon"_s, u"-IPTC:Province-State=Rhône"_s,
         u"-IPTC:Sub-location=Vieux Lyon"_s, u"-IPTC:Country-PrimaryLocationName=France"_s});
    m_files[u"xmp-only"_s] = Fixtures::makeJpeg(
        dir, u"xmp-only.jpg"_s,
        {u"-XMP-photoshop:City=Nice"_s, u"-XMP-photoshop:State=Provence"_s,
         u"-XMP-photoshop:Country=France"_s, u"-XMP-iptcCore:Location=Le Port"_s,
         u"-XMP-exif:GPSLatitude=-43.7"_s, u"-XMP-exif:GPSLongitude=-7.26"_s});
    m_files[u"iptc-xmp-disagree"_s] = Fixtures::makeJpeg(
        dir, u"iptc-xmp-disagree.jpg"_s,
        {u"-IPTC:City=Lyon"_s, u"-XMP-photoshop:City=Lille"_s, u"-IPTC:Province-State=Nord"_s,
         u"-XMP-photoshop:State= Nord "_s, u"-IPTC:Country-PrimaryLocationName=France"_s,
         u"-XMP-photoshop:Country=Belgique"_s, u"-IPTC:Sub-location=Centre"_s,
         u"-XMP-iptcCore:Location=Gare"_s});
    m_files[u"gps-disagree"_s] = Fixtures::makeJpeg(
        dir, u"gps-disagree.jpg"_s,
        northEast
            + QStringList {u"-XMP-exif:GPSLatitude=48.8583"_s, u"-XMP-exif:GPSLongitude=2.3"_s});
    m_files[u"gps-agree"_s]
        = Fixtures::makeJpeg(dir, u"gps-agree.jpg"_s,
                             southWest
                                 + QStringList {u"-XMP-exif:GPSLatitude=-33.8688"_s,
                                                u"-XMP-exif:GPSLongitude=-70.6693"_s});
    m_files[u"iptc-city-xmp-state"_s] = Fixtures::makeJpeg(
        dir, u"iptc-city-xmp-state.jpg"_s,
        {u"-IPTC:City=Lyon"_s, u"-XMP-photoshop:City=Lille"_s, u"-XMP-photoshop:State=Rhône"_s,
         u"-XMP-exif:GPSAltitude=120"_s, u"-GPSLatitude=45.76"_s, u"-GPSLatitudeRef=N"_s});
    m_files[u"gif-xmp"_s] = QDir(dir).filePath(u"xmp.gif"_s);
    QVERIFY(
        Fixtures::run(u"convert"_s, {u"-size"_s, u"8x8"_s, u"xc:red"_s, m_files[u"gif-xmp"_s]}));
    QVERIFY(Fixtures::writeTags(m_files[u"gif-xmp"_s],
                                {u"-XMP-photoshop:City=Zürich"_s, u"-XMP-exif:GPSLatitude=47.37"_s,
                                 u"-XMP-exif:GPSLongitude=-8.54"_s}));
    m_files[u"mov-xmp"_s] = Fixtures::makeVideo(dir, u"xmp.mov"_s);
    QVERIFY(Fixtures::writeTags(
        m_files[u"mov-xmp"_s],
        {u"-XMP-exif:GPSLatitude=-33.8688"_s, u"-XMP-exif:GPSLongitude=151.2093"_s}));
    // An SVG carries its XMP packet inline, in its metadata element.
    m_files[u"svg-xmp"_s] = Fixtures::makeFile(
        dir, u"inline.svg"_s,
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"8\" height=\"8\"><metadata>"
        "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\" "
        "xmlns:dc=\"http://purl.org/dc/elements/1.1/\"><rdf:Description><dc:title>Map"
        "</dc:title></rdf:Description></rdf:RDF></metadata></svg>\n");
    m_files[u"svg"_s] = Fixtures::makeFile(
        dir, u"plain.svg"_s,
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"8\" height=\"8\"><title>Map"
        "</title></svg>\n");
    m_files[u"mp4"_s] = Fixtures::makeVideo(dir, u"location.mp4"_s);
    Fixtures::writeTags(m_files[u"mp4"_s], {u"-UserData:GPSCoordinates=-33.8688, -70.6693"_s});
    // ffmpeg stores a position given as ISO 6709 text in a 3GPP location box only.
    m_files[u"mp4-loci"_s]
        = Fixtures::makeVideo(dir, u"loci.mp4"_s, {u"-metadata"_s, u"location=-33.875-070.625/"_s});
    m_files[u"mov"_s] = Fixtures::makeVideo(dir, u"location.mov"_s);
    Fixtures::writeTags(m_files[u"mov"_s], {u"-Keys:GPSCoordinates=48.8583, 2.2944, 35"_s});
    m_files[u"m4a"_s] = Fixtures::makeAudio(dir, u"sound.m4a"_s, {u"-metadata"_s, u"track=3/12"_s});
    Fixtures::writeTags(m_files[u"m4a"_s], {u"-ItemList:GPSCoordinates=18.0138, -76.7519"_s});
    m_files[u"mp3"_s] = Fixtures::makeAudio(dir, u"track.mp3"_s, {u"-metadata"_s, u"track=3/12"_s});
    m_files[u"png"_s] = Fixtures::makePng(dir, u"picture.png"_s, northEast);
    m_files[u"scripts"_s] = Fixtures::makeJpeg(dir, u"Αθήνα 東京 Москва القاهرة.jpg"_s, northEast);
    m_files[u"section"_s]
        = Fixtures::makeJpeg(dir, u"ala-moana.jpg"_s,
                             {u"-GPSLatitude=21.292"_s, u"-GPSLatitudeRef=N"_s,
                              u"-GPSLongitude=157.8426"_s, u"-GPSLongitudeRef=W"_s});
    m_files[u"empty"_s] = Fixtures::makeFile(dir, u"empty.jpg"_s, QByteArray());
    m_files[u"corrupt"_s] = Fixtures::makeFile(dir, u"corrupt.jpg"_s,
                                               QByteArray("\xFF\xD8\xFF\xE1\x7F\xFF"
                                                          "Exif\0\0MM\0*",
                                                          16)
                                                   + QByteArray(300, '\xA5'));
    QVERIFY(QDir(dir).mkdir(u"folder.jpg"_s));
    m_files[u"folder"_s] = QDir(dir).filePath(u"folder.jpg"_s);
    m_files[u"missing"_s] = QDir(dir).filePath(u"missing.jpg"_s);
    const QMap<QString, QString> unreadable
        = Fixtures::makeUnreadableFiles(dir, u"unreadable"_s, u"jpg"_s);
    for (auto file = unreadable.cbegin(); file != unreadable.cend(); ++file)
        m_files[file.key()] = file.value();

    m_worker = std::make_unique<ExifToolProcess>(
        applicationWhiteList(), ExifToolHelper::sharedInstance().rawWhiteList(), true);
}

QHash<QString, QString> tst_ExtractWorker::genericValues(ExifToolProcess &process,
                                                         const QString &path)
{
    QHash<QString, QString> values;
    const std::optional<QString> answer = process.obtainStrippedString(path);
    if (!answer)
        return values;
    for (const ExtractedTag &tag : ExifToolResponseParser::parse(*answer)) {
        if (tag.source == MetadataSource::ExifToolGeneric)
            values.insert(tag.key, tag.value);
    }
    return values;
}

void tst_ExtractWorker::keys_data()
{
    QTest::addColumn<QString>("file");
    // "Key=value" must be there with that value, "!Key" must be absent.
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("EXIF north and east")
        << u"north-east"_s
        << expect("GPSLatitude#=48.8583|GPSLongitude#=2.2944|GPSLatitudeRef=North|"
                  "GPSLongitudeRef=East|GPSAltitude#=35|GPSAltitudeRef=Above Sea Level|"
                  "GPSLatitude=48 deg 51' 29.88\"|GeolocationCountry=France|!XMPPresent|"
                  "!GPSDivergent|!XMPGPSLatitude#");
    QTest::newRow("EXIF south and west, unsigned with references")
        << u"south-west"_s
        << expect("GPSLatitude#=33.8688|GPSLongitude#=70.6693|GPSLatitudeRef=South|"
                  "GPSLongitudeRef=West|GeolocationCountry=Chile");
    QTest::newRow("IPTC fields")
        << u"iptc"_s
        << expect("City=Lyon|Province-State=Rhône|Sub-location=Vieux Lyon|Country=France|"
                  "!XMPCity|!XMPPresent|!CityDivergent|!GPSLatitude#");
    // Without a legacy copy, the XMP copy answers for the plain names, in the legacy form.
    QTest::newRow("XMP only")
        << u"xmp-only"_s
        << expect("XMPCity=Nice|XMPState=Provence|XMPCountry=France|XMPLocation=Le Port|"
                  "XMPGPSLatitude#=-43.7|XMPGPSLongitude#=-7.26|XMPPresent=1|City=Nice|"
                  "Province-State=Provence|Country=France|Sub-location=Le Port|"
                  "GPSLatitude#=43.7|GPSLatitudeRef=South|GPSLongitude#=7.26|"
                  "GPSLongitudeRef=West|GPSLatitude=43 deg 42' 0.00\"|!GPSDivergent|"
                  "!CityDivergent");
    QTest::newRow("each field stands in on its own")
        << u"iptc-city-xmp-state"_s
        << expect("City=Lyon|CityDivergent=1|Province-State=Rhône|GPSLatitude#=45.76|"
                  "!GPSLongitude#|!GPSLongitudeRef|GPSAltitude#=120|GPSAltitude=120 m");
    QTest::newRow("GIF with XMP")
        << u"gif-xmp"_s
        << expect("City=Zürich|GPSLatitude#=47.37|GPSLatitudeRef=North|GPSLongitude#=8.54|"
                  "GPSLongitudeRef=West|XMPPresent=1");
    QTest::newRow("MOV with an XMP position only, signed")
        << u"mov-xmp"_s
        << expect("GPSLatitude#=-33.8688|GPSLongitude#=151.2093|!GPSLatitudeRef|"
                  "GPSLatitude=33 deg 52' 7.68\" S|XMPPresent=1");
    QTest::newRow("SVG with an inline XMP packet") << u"svg-xmp"_s << expect("XMPPresent=1");
    QTest::newRow("SVG without XMP") << u"svg"_s << expect("!XMPPresent");
    QTest::newRow("IPTC and XMP disagree")
        << u"iptc-xmp-disagree"_s
        << expect("City=Lyon|XMPCity=Lille|CityDivergent=1|!StateDivergent|"
                  "CountryDivergent=1|SublocationDivergent=1|XMPPresent=1");
    QTest::newRow("EXIF and XMP positions disagree")
        << u"gps-disagree"_s
        << expect("GPSLatitude#=48.8583|XMPGPSLongitude#=2.3|GPSDivergent=1|XMPPresent=1");
    QTest::newRow("EXIF and XMP agree once the references sign the position")
        << u"gps-agree"_s << expect("GPSLatitude#=33.8688|XMPGPSLatitude#=-33.8688|!GPSDivergent");
    QTest::newRow("MP4, UserData location, signed")
        << u"mp4"_s
        << expect("GPSLatitude#=-33.8688|GPSLongitude#=-70.6693|!GPSLatitudeRef|"
                  "!GPSLongitudeRef|GeolocationCountry=Chile");
    QTest::newRow("MP4, 3GPP location box")
        << u"mp4-loci"_s << expect("GPSLatitude#=-33.875|GPSLongitude#=-70.625|!GPSLatitudeRef");
    QTest::newRow("MOV, Keys location with altitude")
        << u"mov"_s
        << expect("GPSLatitude#=48.8583|GPSLongitude#=2.2944|GPSAltitude#=35|"
                  "!GPSLatitudeRef");
    QTest::newRow("M4A, ItemList location")
        << u"m4a"_s << expect("GPSLatitude#=18.0138|GPSLongitude#=-76.7519");
    QTest::newRow("MP3 without position") << u"mp3"_s << expect("!GPSLatitude#");
    QTest::newRow("PNG with EXIF")
        << u"png"_s << expect("GPSLatitude#=48.8583|GPSLatitudeRef=North");
    QTest::newRow("name in several scripts")
        << u"scripts"_s << expect("GPSLatitude#=48.8583|GPSLongitudeRef=East");
    QTest::newRow("section of a populated place")
        << u"section"_s
        << expect("GeolocationCity=Ala Moana|GeolocationFeatureCode=PPLX|"
                  "GeolocationSubregion=Honolulu County|GeolocationRegion=Hawaii|"
                  "computedCity=Honolulu|computedSublocation=Ala Moana");
}

void tst_ExtractWorker::keys()
{
    QFETCH(QString, file);
    QFETCH(QStringList, expected);
    const QHash<QString, QString> values = genericValues(*m_worker, m_files.value(file));
    for (const QString &expectation : expected) {
        if (expectation.startsWith(u'!')) {
            const QString key = expectation.mid(1);
            QVERIFY2(!values.contains(key), qPrintable(key + u" = "_s + values.value(key)));
            continue;
        }
        const QString key = expectation.section(u'=', 0, 0);
        const QString value = expectation.section(u'=', 1);
        QVERIFY2(values.contains(key), qPrintable(key + u" is missing"_s));
        QCOMPARE(values.value(key), value);
    }
}

void tst_ExtractWorker::trackNumbers_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("MP3, ID3 track 3/12") << u"mp3"_s;
    QTest::newRow("M4A, track 3 of 12") << u"m4a"_s;
}

void tst_ExtractWorker::trackNumbers()
{
    QFETCH(QString, file);
    ExifToolProcess worker({u"Track"_s, u"TrackNumber"_s}, {}, false);
    const QHash<QString, QString> values = genericValues(worker, m_files.value(file));
    QCOMPARE(values.value(u"track"_s), u"3"_s);
    QCOMPARE(values.value(u"numTrack"_s), u"12"_s);
    QVERIFY(!values.contains(u"Track"_s));
    QVERIFY(!values.contains(u"TrackNumber"_s));
}

void tst_ExtractWorker::badFilesGetCompleteAnswers_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("empty file") << u"empty"_s;
    QTest::newRow("corrupt JPEG") << u"corrupt"_s;
    QTest::newRow("folder with an image extension") << u"folder"_s;
    QTest::newRow("missing file") << u"missing"_s;
    // Never opened: each would block the worker, and every read behind it, or fail mid-read.
    QTest::newRow("named pipe") << u"named pipe"_s;
    QTest::newRow("socket") << u"socket"_s;
    QTest::newRow("device") << u"device"_s;
    QTest::newRow("read error") << u"read error"_s;
}

void tst_ExtractWorker::badFilesGetCompleteAnswers()
{
    QFETCH(QString, file);
    const std::optional<QString> answer = m_worker->obtainStrippedString(m_files.value(file));
    QVERIFY(answer);
    QVERIFY(answer->endsWith(u"{extracted-key}:-<-do-not_use_thisInMetaData-Finished-->"_s));
    for (const ExtractedTag &tag : ExifToolResponseParser::parse(*answer))
        QVERIFY2(!tag.key.startsWith(u"GPS"), qPrintable(tag.key));
    // The worker goes on answering.
    QCOMPARE(genericValues(*m_worker, m_files.value(u"north-east"_s)).value(u"GPSLatitude#"_s),
             u"48.8583"_s);
}

void tst_ExtractWorker::groupedTagsLandAtTheirSource()
{
    const QString path
        = Fixtures::makeJpeg(m_directory.path(), u"dated.jpg"_s,
                             {u"-DateTimeOriginal=2021:07:04 12:30:15"_s,
                              u"-SubSecTimeOriginal=25"_s, u"-OffsetTimeOriginal=+02:00"_s});
    const std::optional<QString> answer = m_worker->obtainStrippedString(path);
    QVERIFY(answer);
    const QList<ExtractedTag> tags = ExifToolResponseParser::parse(*answer);
    QVERIFY(tags.contains(ExtractedTag {MetadataSource::Composite, u"SubSecDateTimeOriginal"_s,
                                        u"2021:07:04 12:30:15.25+02:00"_s}));
    QVERIFY(tags.contains(ExtractedTag {MetadataSource::ExifToolGeneric, u"DateTimeOriginal"_s,
                                        u"2021:07:04 12:30:15"_s}));
}

void tst_ExtractWorker::answersDoNotDependOnEarlierFiles()
{
    // One ExifTool object serves every request: nothing of one file may linger into the next.
    // The worker that has served the other tests reads the files in one order, a fresh one in
    // the other, and each file must get the same answer from both.
    QStringList names = m_files.keys();
    names.sort();
    QHash<QString, QString> answers;
    for (const QString &name : names) {
        const std::optional<QString> answer = m_worker->obtainStrippedString(m_files.value(name));
        QVERIFY(answer);
        answers.insert(name, *answer);
    }
    QVERIFY(answers.value(u"north-east"_s).contains(u"{extracted-key}:GPSLatitude#\n"_s));

    ExifToolProcess fresh(applicationWhiteList(), ExifToolHelper::sharedInstance().rawWhiteList(),
                          true);
    std::reverse(names.begin(), names.end());
    for (const QString &name : names)
        QCOMPARE(fresh.obtainStrippedString(m_files.value(name)), answers.value(name));
}

void tst_ExtractWorker::usesTheResourceExifTool()
{
    // A decoy library on Perl's search path must not be picked up.
    QTemporaryDir decoy;
    QVERIFY(QDir(decoy.path()).mkpath(u"Image"_s));
    Fixtures::makeFile(decoy.path() + u"/Image"_s, u"ExifTool.pm"_s,
                       "package Image::ExifTool; die \"decoy ExifTool loaded\\n\"; 1;\n");
    qputenv("PERL5LIB", decoy.path().toUtf8());
    ExifToolProcess worker({u"ExifToolVersion"_s, u"GeolocationCity"_s}, {u"GPSLatitude#"_s}, true);
    qunsetenv("PERL5LIB");

    const QHash<QString, QString> values = genericValues(worker, m_files.value(u"section"_s));
    QCOMPARE(values.value(u"ExifToolVersion"_s), u"13.59"_s);
    QCOMPARE(values.value(u"GeolocationCity"_s), u"Ala Moana"_s);

    // Without the switch, the geolocation database is not asked.
    ExifToolProcess plain({u"GeolocationCity"_s}, {u"GPSLatitude#"_s}, false);
    const QHash<QString, QString> plainValues = genericValues(plain, m_files.value(u"section"_s));
    QCOMPARE(plainValues.value(u"GPSLatitude#"_s), u"21.292"_s);
    QVERIFY(!plainValues.contains(u"GeolocationCity"_s));
}

void tst_ExtractWorker::exitsAtEndOfInput()
{
    pid_t pid = -1;
    {
        ExifToolProcess worker({u"City"_s}, {}, false);
        pid = worker.processIdentifier();
        QVERIFY(worker.obtainStrippedString(m_files.value(u"iptc"_s)));
    }
    QVERIFY(TestSupport::waitUntil([&] { return kill(pid, 0) != 0; }));
}

QTEST_GUILESS_MAIN(tst_ExtractWorker)
#include "tst_ExtractWorker.moc"
