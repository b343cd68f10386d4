#include "acquisition/ExifToolResponseParser.h"

#include <QTest>

using namespace Qt::StringLiterals;

using Tags = QList<ExtractedTag>;
Q_DECLARE_METATYPE(ExtractedTag)

namespace {

const QString terminatorLine = u"{extracted-key}:-<-do-not_use_thisInMetaData-Finished-->"_s;

ExtractedTag generic(const QString &key, const QString &value)
{
    return {MetadataSource::ExifToolGeneric, key, value};
}

} // namespace

namespace QTest {
template<>
char *toString(const ExtractedTag &tag)
{
    return qstrdup(qPrintable(u"(%1, %2, %3)"_s.arg(int(tag.source)).arg(tag.key, tag.value)));
}
} // namespace QTest

class tst_ExifToolResponseParser : public QObject
{
    Q_OBJECT

private slots:
    void parseLoop_data();
    void parseLoop();
    void trackAndDisk_data();
    void trackAndDisk();
    void computedLocation_data();
    void computedLocation();
};

void tst_ExifToolResponseParser::parseLoop_data()
{
    QTest::addColumn<QString>("response");
    QTest::addColumn<Tags>("expected");

    QTest::newRow("the example answer")
        << u"{extracted-key}:GPSLatitude#\n48.8583\n"
           "{extracted-key}:Composite:SubSecDateTimeOriginal\n2021:07:04 12:30:15.25+02:00\n"
           "{extracted-key}:City\nParis\n"_s
            + terminatorLine
        << Tags {generic(u"GPSLatitude#"_s, u"48.8583"_s),
                 {MetadataSource::Composite, u"SubSecDateTimeOriginal"_s,
                  u"2021:07:04 12:30:15.25+02:00"_s},
                 generic(u"City"_s, u"Paris"_s)};
    QTest::newRow("last tag without a closing key line is lost")
        << u"{extracted-key}:City\nParis\n{extracted-key}:Country\nFrance"_s
        << Tags {generic(u"City"_s, u"Paris"_s)};
    QTest::newRow("key lines only store nothing")
        << u"{extracted-key}:City\n{extracted-key}:Country\n"_s + terminatorLine << Tags {};
    QTest::newRow("multi-line value joined by line feeds, lines trimmed")
        << u"{extracted-key}:Description\n  first line \n\tsecond\n"_s + terminatorLine
        << Tags {generic(u"Description"_s, u"first line\nsecond"_s)};
    QTest::newRow("leading blank lines leave the value empty, later ones add line feeds")
        << u"{extracted-key}:City\n\n\n  Paris\n\nCedex\n\n"_s + terminatorLine
        << Tags {generic(u"City"_s, u"Paris\n\nCedex\n"_s)};
    QTest::newRow("carriage return and line feed make an empty line")
        << u"{extracted-key}:City\r\nParis\r\n"_s + terminatorLine
        << Tags {generic(u"City"_s, u"Paris\n"_s)};
    QTest::newRow("every newline character splits")
        << u"{extracted-key}:Note\na\u000Bb\u000Cc\u0085d\u2028e\u2029f\n"_s + terminatorLine
        << Tags {generic(u"Note"_s, u"a\nb\nc\nd\ne\nf"_s)};
    QTest::newRow("a value of one space is not stored")
        << u"{extracted-key}:City\n \n"_s + terminatorLine << Tags {};
    QTest::newRow("too many colons store under the empty key")
        << u"{extracted-key}:XMP:XMP-dc:Title\nHello\n"_s + terminatorLine
        << Tags {generic(QString(), u"Hello"_s)};
    QTest::newRow("empty pieces of the key are dropped")
        << u"{extracted-key}::City\nParis\n{extracted-key}:IPTC::City\nNice\n"_s + terminatorLine
        << Tags {generic(u"City"_s, u"Paris"_s), {MetadataSource::IPTC, u"City"_s, u"Nice"_s}};
    QTest::newRow("groups go to their sources, unknown groups to Other")
        << u"{extracted-key}:XMP:City\nA\n{extracted-key}:quicktime:Make\nB\n"
           "{extracted-key}:File:FileType\nC\n"_s
            + terminatorLine
        << Tags {{MetadataSource::XMP, u"City"_s, u"A"_s},
                 {MetadataSource::QuickTime, u"Make"_s, u"B"_s},
                 {MetadataSource::Other, u"FileType"_s, u"C"_s}};
    QTest::newRow("value lines before any key line go to the empty key")
        << u"stray\n{extracted-key}:City\nParis\n"_s + terminatorLine
        << Tags {generic(QString(), u"stray"_s), generic(u"City"_s, u"Paris"_s)};
    QTest::newRow("empty answer") << QString() << Tags {};
}

void tst_ExifToolResponseParser::parseLoop()
{
    QFETCH(QString, response);
    QFETCH(Tags, expected);
    QCOMPARE(ExifToolResponseParser::parse(response), expected);
}

void tst_ExifToolResponseParser::trackAndDisk_data()
{
    QTest::addColumn<QString>("response");
    QTest::addColumn<Tags>("expected");

    // The plain "3 of 12" and "3/12" come from real files in the worker's test.
    const auto track = [](const QString &tag, const QString &value) {
        return u"{extracted-key}:%1\n%2\n"_s.arg(tag, value) + terminatorLine;
    };
    QTest::newRow("3") << track(u"Track"_s, u"3"_s) << Tags {generic(u"track"_s, u"3"_s)};
    QTest::newRow("/12") << track(u"Track"_s, u"/12"_s) << Tags {generic(u"numTrack"_s, u"12"_s)};
    QTest::newRow("A/B") << track(u"Track"_s, u"A/B"_s) << Tags {};
    QTest::newRow("case-sensitive of") << track(u"Track"_s, u"3 OF 12"_s) << Tags {};
    QTest::newRow("own decimal form")
        << track(u"TrackNumber"_s, u"007/+12"_s)
        << Tags {generic(u"track"_s, u"7"_s), generic(u"numTrack"_s, u"12"_s)};
    QTest::newRow("both forms apply independently")
        << track(u"Track"_s, u"3 of 4/5"_s)
        << Tags {generic(u"track"_s, u"3"_s), generic(u"numTrack"_s, u"5"_s)};
    QTest::newRow("out of range is dropped")
        << track(u"Track"_s, u"99999999999999999999"_s) << Tags {};
    QTest::newRow("disk in a group")
        << u"{extracted-key}:ID3:PartOfSet\n1/2\n{extracted-key}:DiskNumber\n2 of 2\n"_s
            + terminatorLine
        << Tags {{MetadataSource::ID3, u"cd"_s, u"1"_s},
                 {MetadataSource::ID3, u"numCds"_s, u"2"_s},
                 generic(u"cd"_s, u"2"_s),
                 generic(u"numCds"_s, u"2"_s)};
}

void tst_ExifToolResponseParser::trackAndDisk()
{
    parseLoop();
}

void tst_ExifToolResponseParser::computedLocation_data()
{
    QTest::addColumn<QString>("response");
    QTest::addColumn<Tags>("computed");

    const auto geolocation
        = [](const QString &city, const QString &subregion, const QString &featureCode) {
              QString text = u"{extracted-key}:GeolocationCity\n%1\n"_s.arg(city);
              if (!subregion.isNull())
                  text += u"{extracted-key}:GeolocationSubregion\n%1\n"_s.arg(subregion);
              if (!featureCode.isNull())
                  text += u"{extracted-key}:GeolocationFeatureCode\n%1\n"_s.arg(featureCode);
              return text + terminatorLine;
          };
    QTest::newRow("section of a place") << geolocation(u"Hamtramck"_s, u"Wayne County"_s, u"PPLX"_s)
                                        << Tags {generic(u"computedCity"_s, u"Wayne"_s),
                                                 generic(u"computedSublocation"_s, u"Hamtramck"_s)};
    QTest::newRow("without the feature code")
        << geolocation(u"Hamtramck"_s, u"Wayne County"_s, QString())
        << Tags {generic(u"computedCity"_s, u"Hamtramck"_s)};
    QTest::newRow("other feature code") << geolocation(u"Hamtramck"_s, u"Wayne County"_s, u"PPL"_s)
                                        << Tags {generic(u"computedCity"_s, u"Hamtramck"_s)};
    // Values are trimmed, so a bare "County" has no leading space to match the suffix.
    QTest::newRow("bare County is not a suffix")
        << geolocation(u"Hamtramck"_s, u" County"_s, u"PPLX"_s)
        << Tags {generic(u"computedCity"_s, u"County"_s),
                 generic(u"computedSublocation"_s, u"Hamtramck"_s)};
    QTest::newRow("only the last suffix is cut")
        << geolocation(u"Kingston"_s, u"Saint Andrew Parish County"_s, u"PPLX"_s)
        << Tags {generic(u"computedCity"_s, u"Saint Andrew Parish"_s),
                 generic(u"computedSublocation"_s, u"Kingston"_s)};
    QTest::newRow("no subregion") << geolocation(u"Hamtramck"_s, QString(), u"PPLX"_s)
                                  << Tags {generic(u"computedCity"_s, u"Hamtramck"_s)};
    QTest::newRow("no city, nothing computed")
        << u"{extracted-key}:GeolocationSubregion\nWayne County\n{extracted-key}:GeolocationFeatureCode\nPPLX\n"_s
            + terminatorLine
        << Tags {};
    QTest::newRow("the city keeps its group") << u"{extracted-key}:XMP:GeolocationCity\nLyon\n"_s
            + terminatorLine << Tags {{MetadataSource::XMP, u"computedCity"_s, u"Lyon"_s}};
}

void tst_ExifToolResponseParser::computedLocation()
{
    QFETCH(QString, response);
    QFETCH(Tags, computed);
    const Tags tags = ExifToolResponseParser::parse(response);
    Tags found;
    for (const ExtractedTag &tag : tags) {
        if (tag.key.startsWith(u"computed"))
            found.append(tag);
    }
    QCOMPARE(found, computed);
    // The computed values come after every tag of the answer.
    QCOMPARE(tags.mid(tags.size() - computed.size()), computed);
}

QTEST_GUILESS_MAIN(tst_ExifToolResponseParser)
#include "tst_ExifToolResponseParser.moc"
