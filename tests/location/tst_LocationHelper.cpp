#include "location/LocationHelper.h"

#include <QTest>

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

using OptionalDouble = std::optional<double>;

namespace {

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
const OptionalDouble none;

QString describe(OptionalDouble value)
{
    return value ? QString::number(*value, 'g', 17) : u"absent"_s;
}

bool same(OptionalDouble actual, OptionalDouble expected)
{
    if (!actual || !expected)
        return !actual && !expected;
    if (std::isnan(*expected))
        return std::isnan(*actual);
    if (std::isinf(*expected))
        return *actual == *expected;
    return std::abs(*actual - *expected) <= 1e-9;
}

} // namespace

#define COMPARE_OPTIONAL(actual, expected) \
    QVERIFY2(same(actual, expected), \
             qPrintable(u"got "_s + describe(actual) + u", expected "_s + describe(expected)))

class tst_LocationHelper : public QObject
{
    Q_OBJECT

private slots:
    void parseCoordinateString_data();
    void parseCoordinateString();
    void parseCoordinateFields_data();
    void parseCoordinateFields();
    void wholeTextDouble_data();
    void wholeTextDouble();
    void coordinateFromDD_data();
    void coordinateFromDD();
    void createCLLocationCoordinate2DFrom_data();
    void createCLLocationCoordinate2DFrom();
    void formats_data();
    void formats();
    void formattedTextsParseBack();
    void truncateDecimalString_data();
    void truncateDecimalString();
    void addPlusOrMinusToValues_data();
    void addPlusOrMinusToValues();
};

void tst_LocationHelper::parseCoordinateString_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<OptionalDouble>("latitude");
    QTest::addColumn<OptionalDouble>("longitude");

    const double eiffelLatitude = 48.0 + 51.0 / 60.0 + 30.24 / 3600.0;
    const double eiffelLongitude = 2.0 + 17.0 / 60.0 + 40.2 / 3600.0;

    QTest::newRow("decimal pair") << u"48.8584, 2.2945"_s << OptionalDouble(48.8584)
                                  << OptionalDouble(2.2945);
    QTest::newRow("single value is the latitude")
        << u"48.8584"_s << OptionalDouble(48.8584) << none;
    QTest::newRow("DMS with symbols")
        << u"48°51'30.24\"N, 2°17'40.2\"E"_s << OptionalDouble(eiffelLatitude)
        << OptionalDouble(eiffelLongitude);
    QTest::newRow("DMS with blanks")
        << u"48 51 30.24 N, 2 17 40.2 E"_s << OptionalDouble(eiffelLatitude)
        << OptionalDouble(eiffelLongitude);
    QTest::newRow("DMS with blanks after symbols")
        << u"48° 51' 30\" N"_s << OptionalDouble(48.0 + 51.0 / 60.0 + 30.0 / 3600.0) << none;
    QTest::newRow("DMS lower-case south")
        << u"48 51 30 s"_s << OptionalDouble(-(48.0 + 51.0 / 60.0 + 30.0 / 3600.0)) << none;
    QTest::newRow("DMS fields not range-checked")
        << u"10 75 90 N"_s << OptionalDouble(11.275) << none;
    QTest::newRow("DMM") << u"48°51.504'N"_s << OptionalDouble(48.8584) << none;
    QTest::newRow("DMM whole minutes west") << u"10°30'W"_s << OptionalDouble(-10.5) << none;
    QTest::newRow("letter glued") << u"48.8584N"_s << OptionalDouble(48.8584) << none;
    QTest::newRow("south negates") << u"48.8584 s"_s << OptionalDouble(-48.8584) << none;
    QTest::newRow("letter overrides minus") << u"-10.5 N"_s << OptionalDouble(10.5) << none;
    QTest::newRow("west as a latitude") << u"10 W"_s << OptionalDouble(-10.0) << none;
    QTest::newRow("longitude first stays in order")
        << u"2.2945 E, 48.8584 N"_s << OptionalDouble(2.2945) << OptionalDouble(48.8584);
    QTest::newRow("sign with DMS refused") << u"-48 51 30 S"_s << none << none;
    QTest::newRow("degrees and letter only") << u"48°N"_s << none << none;
    QTest::newRow("letter between fields") << u"48 51 N 30"_s << none << none;
    QTest::newRow("DMS without letter") << u"10°30'15\""_s << none << none;
    QTest::newRow("doubled degree sign") << u"48°°51'30\"N"_s << none << none;
    QTest::newRow("three parts") << u"1, 2, 3"_s << none << none;
    QTest::newRow("decimal commas") << u"48,5, 2,3"_s << none << none;
    QTest::newRow("empty") << QString() << none << none;
    QTest::newRow("comma only") << u","_s << none << none;
    QTest::newRow("trailing comma") << u"10,"_s << OptionalDouble(10.0) << none;
    QTest::newRow("leading comma") << u", 20"_s << none << OptionalDouble(20.0);
    QTest::newRow("blanks and tabs trimmed")
        << u" \t48.8584\t "_s << OptionalDouble(48.8584) << none;
    QTest::newRow("no-break space trimmed")
        << u"\u00a048.8584\u3000"_s << OptionalDouble(48.8584) << none;
    QTest::newRow("line feed not trimmed here") << u"48.8584\n"_s << none << none;
    QTest::newRow("exponent") << u"1e1, -2.5E-1"_s << OptionalDouble(10.0) << OptionalDouble(-0.25);
    QTest::newRow("nan and inf") << u"nan, -inf"_s << OptionalDouble(notANumber)
                                 << OptionalDouble(-inf);
    QTest::newRow("spelled infinity") << u"INFINITY"_s << OptionalDouble(inf) << none;
    QTest::newRow("nan with payload") << u"nan(0x7)"_s << OptionalDouble(notANumber) << none;
    QTest::newRow("hexadecimal floats")
        << u"0x1p4, -0X1.8P1"_s << OptionalDouble(16.0) << OptionalDouble(-3.0);
    QTest::newRow("decimal comma single")
        << u"48,5"_s << OptionalDouble(48.0) << OptionalDouble(5.0);
    QTest::newRow("NUL at the end") << u"48.5\0"_s << none << none;
    QTest::newRow("NUL in one half") << u"48.5\0, 2"_s << none << OptionalDouble(2.0);
    QTest::newRow("Arabic-Indic digits alone") << u"\u0664\u0668.\u0665"_s << none << none;
    QTest::newRow("fullwidth digits") << u"\uff14\uff18 N"_s << none << none;
    QTest::newRow("Greek Nu for N") << u"48 51 30 \u039d"_s << none << none;
    QTest::newRow("emoji") << u"48.5 🧭"_s << none << none;
    QTest::newRow("long run of digits") << QString(100000, u'9') << OptionalDouble(inf) << none;
    QTest::newRow("long tiny fraction")
        << (u"0."_s + QString(5000, u'0') + u"1"_s) << OptionalDouble(0.0) << none;
    QTest::newRow("long blank padding")
        << (QString(50000, u' ') + u"10 N"_s + QString(50000, u'\t')) << OptionalDouble(10.0)
        << none;
    QTest::newRow("many commas") << QString(10000, u',') << none << none;
    QTest::newRow("long junk") << QString(100000, u'x') << none << none;
}

void tst_LocationHelper::parseCoordinateString()
{
    QFETCH(QString, text);
    QFETCH(OptionalDouble, latitude);
    QFETCH(OptionalDouble, longitude);
    const auto parsed = LocationHelper::shared().parseCoordinateString(text);
    COMPARE_OPTIONAL(parsed.latitude, latitude);
    COMPARE_OPTIONAL(parsed.longitude, longitude);
}

void tst_LocationHelper::parseCoordinateFields_data()
{
    QTest::addColumn<QString>("latitudeInput");
    QTest::addColumn<QString>("longitudeInput");
    QTest::addColumn<OptionalDouble>("latitude");
    QTest::addColumn<OptionalDouble>("longitude");

    QTest::newRow("both empty join as zeros")
        << QString() << QString() << OptionalDouble(0.0) << OptionalDouble(0.0);
    QTest::newRow("latitude only")
        << u"10"_s << QString() << OptionalDouble(10.0) << OptionalDouble(0.0);
    QTest::newRow("longitude only")
        << QString() << u"20"_s << OptionalDouble(0.0) << OptionalDouble(20.0);
    QTest::newRow("both fields") << u"10"_s << u"20"_s << OptionalDouble(10.0)
                                 << OptionalDouble(20.0);
    QTest::newRow("pair in latitude wins")
        << u"1, 2"_s << u"junk"_s << OptionalDouble(1.0) << OptionalDouble(2.0);
    QTest::newRow("pair in longitude wins")
        << u"junk"_s << u"1, 2"_s << OptionalDouble(1.0) << OptionalDouble(2.0);
    QTest::newRow("pair in both: latitude field first")
        << u"1, 2"_s << u"3, 4"_s << OptionalDouble(1.0) << OptionalDouble(2.0);
    QTest::newRow("junk next to empty") << u"junk"_s << QString() << none << OptionalDouble(0.0);
    QTest::newRow("own comma makes three parts") << u"1,"_s << u"2"_s << none << none;
    QTest::newRow("three parts and a value") << u"10, 20, 30"_s << u"5"_s << none << none;
    QTest::newRow("newlines trimmed")
        << u"\n 48.5 N \n"_s << u"\t2.25 E\r\n"_s << OptionalDouble(48.5) << OptionalDouble(2.25);
    QTest::newRow("line separator trimmed")
        << u"\u202848.5\u2029"_s << u"\u00852"_s << OptionalDouble(48.5) << OptionalDouble(2.0);
    QTest::newRow("DMS in each field") << u"48°51'30.24\"N"_s << u"2°17'40.2\"W"_s
                                       << OptionalDouble(48.0 + 51.0 / 60.0 + 30.24 / 3600.0)
                                       << OptionalDouble(-(2.0 + 17.0 / 60.0 + 40.2 / 3600.0));
    QTest::newRow("no range check")
        << u"nan"_s << u"1000"_s << OptionalDouble(notANumber) << OptionalDouble(1000.0);
    QTest::newRow("NUL in a field") << u"\0"_s << u"5"_s << none << OptionalDouble(5.0);
}

void tst_LocationHelper::parseCoordinateFields()
{
    QFETCH(QString, latitudeInput);
    QFETCH(QString, longitudeInput);
    QFETCH(OptionalDouble, latitude);
    QFETCH(OptionalDouble, longitude);
    const auto parsed
        = LocationHelper::shared().parseCoordinateFields(latitudeInput, longitudeInput);
    COMPARE_OPTIONAL(parsed.latitude, latitude);
    COMPARE_OPTIONAL(parsed.longitude, longitude);
}

void tst_LocationHelper::wholeTextDouble_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<OptionalDouble>("expected");

    QTest::newRow("plain") << u"48.8584"_s << OptionalDouble(48.8584);
    QTest::newRow("signed") << u"+002.500"_s << OptionalDouble(2.5);
    QTest::newRow("point only before") << u".5"_s << OptionalDouble(0.5);
    QTest::newRow("point only after") << u"5."_s << OptionalDouble(5.0);
    QTest::newRow("overflow reads as infinity") << u"1e999"_s << OptionalDouble(inf);
    QTest::newRow("empty") << QString() << none;
    QTest::newRow("leading blank") << u" 1"_s << none;
    QTest::newRow("leading tab") << u"\t1"_s << none;
    QTest::newRow("leading line feed") << u"\n1"_s << none;
    QTest::newRow("leading NUL") << u"\0"
                                    "1"_s
                                 << none;
    QTest::newRow("trailing blank") << u"1 "_s << none;
    QTest::newRow("decimal comma") << u"1,5"_s << none;
    QTest::newRow("sign only") << u"-"_s << none;
    QTest::newRow("point only") << u"."_s << none;
    QTest::newRow("letter after") << u"1N"_s << none;
    QTest::newRow("non-ASCII digit") << u"\u0661"_s << none;
    QTest::newRow("minus sign character") << u"\u22121"_s << none;
}

void tst_LocationHelper::wholeTextDouble()
{
    QFETCH(QString, text);
    QFETCH(OptionalDouble, expected);
    COMPARE_OPTIONAL(LocationHelper::wholeTextDouble(text), expected);
}

void tst_LocationHelper::coordinateFromDD_data()
{
    QTest::addColumn<QString>("latitude");
    QTest::addColumn<QString>("longitude");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<Coordinate2D>("expected");

    QTest::newRow("stored form") << u"+48.858400"_s << u"-002.294500"_s << true
                                 << Coordinate2D {48.8584, -2.2945};
    QTest::newRow("no range check") << u"100"_s << u"-500"_s << true << Coordinate2D {100, -500};
    QTest::newRow("hexadecimal") << u"-0x1p1"_s << u"1e2"_s << true << Coordinate2D {-2, 100};
    QTest::newRow("letter refused") << u"48.8584 N"_s << u"2"_s << false << Coordinate2D {};
    QTest::newRow("leading blank refused") << u" 48"_s << u"2"_s << false << Coordinate2D {};
    QTest::newRow("empty longitude") << u"48"_s << QString() << false << Coordinate2D {};
    QTest::newRow("DMS refused") << u"48 51 30 N"_s << u"2"_s << false << Coordinate2D {};
}

void tst_LocationHelper::coordinateFromDD()
{
    QFETCH(QString, latitude);
    QFETCH(QString, longitude);
    QFETCH(bool, valid);
    QFETCH(Coordinate2D, expected);
    const auto coordinate = LocationHelper::shared().coordinateFromDD(latitude, longitude);
    QCOMPARE(coordinate.has_value(), valid);
    if (valid)
        QVERIFY(*coordinate == expected);
}

void tst_LocationHelper::createCLLocationCoordinate2DFrom_data()
{
    QTest::addColumn<QString>("latitude");
    QTest::addColumn<QString>("longitude");
    QTest::addColumn<QString>("latitudeRef");
    QTest::addColumn<QString>("longitudeRef");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<Coordinate2D>("expected");

    QTest::newRow("north east") << u"48.8584"_s << u"2.2945"_s << u"N"_s << u"E"_s << true
                                << Coordinate2D {48.8584, 2.2945};
    QTest::newRow("words any case") << u"48.8584"_s << u"2.2945"_s << u"south"_s << u"West"_s
                                    << true << Coordinate2D {-48.8584, -2.2945};
    QTest::newRow("negative values flip")
        << u"-10"_s << u"-20"_s << u"s"_s << u"w"_s << true << Coordinate2D {10, 20};
    QTest::newRow("empty reference")
        << u"10"_s << u"20"_s << QString() << u"E"_s << false << Coordinate2D {};
    QTest::newRow("axis letters swapped")
        << u"10"_s << u"20"_s << u"E"_s << u"N"_s << false << Coordinate2D {};
    QTest::newRow("unknown longitude word")
        << u"10"_s << u"20"_s << u"N"_s << u"X"_s << false << Coordinate2D {};
    QTest::newRow("bad number") << u"abc"_s << u"20"_s << u"N"_s << u"E"_s << false
                                << Coordinate2D {};
}

void tst_LocationHelper::createCLLocationCoordinate2DFrom()
{
    QFETCH(QString, latitude);
    QFETCH(QString, longitude);
    QFETCH(QString, latitudeRef);
    QFETCH(QString, longitudeRef);
    QFETCH(bool, valid);
    QFETCH(Coordinate2D, expected);
    const auto coordinate = LocationHelper::shared().createCLLocationCoordinate2DFrom(
        latitude, longitude, latitudeRef, longitudeRef);
    QCOMPARE(coordinate.has_value(), valid);
    if (valid)
        QVERIFY(*coordinate == expected);
}

void tst_LocationHelper::formats_data()
{
    QTest::addColumn<double>("coordinate");
    QTest::addColumn<bool>("isLatitude");
    QTest::addColumn<QString>("dms");
    QTest::addColumn<QString>("dmm");

    QTest::newRow("Eiffel tower latitude")
        << 48.8584 << true << u"48°51'30.24\"N"_s << u"48°51.504'N"_s;
    QTest::newRow("San Francisco longitude")
        << -122.4194 << false << u"122°25'9.84\"W"_s << u"122°25.164'W"_s;
    QTest::newRow("just below zero reads north")
        << -0.5 << true << u"0°30'0.00\"N"_s << u"0°30.000'N"_s;
    QTest::newRow("just below zero reads east")
        << -0.25 << false << u"0°15'0.00\"E"_s << u"0°15.000'E"_s;
    QTest::newRow("minus one and a half") << -1.5 << false << u"1°30'0.00\"W"_s << u"1°30.000'W"_s;
    QTest::newRow("zero") << 0.0 << false << u"0°0'0.00\"E"_s << u"0°0.000'E"_s;
    QTest::newRow("south pole") << -90.0 << true << u"90°0'0.00\"S"_s << u"90°0.000'S"_s;
    QTest::newRow("antimeridian") << 180.0 << false << u"180°0'0.00\"E"_s << u"180°0.000'E"_s;
    QTest::newRow("seconds round up without carry")
        << 10.0 + 59.0 / 60.0 + 59.996 / 3600.0 << true << u"10°59'60.00\"N"_s << u"10°60.000'N"_s;
}

void tst_LocationHelper::formats()
{
    QFETCH(double, coordinate);
    QFETCH(bool, isLatitude);
    QFETCH(QString, dms);
    QFETCH(QString, dmm);
    const CoordinateAxis axis = isLatitude ? CoordinateAxis::Latitude : CoordinateAxis::Longitude;
    QCOMPARE(LocationHelper::shared().formatToDMS(coordinate, axis), dms);
    QCOMPARE(LocationHelper::shared().formatToDMM(coordinate, axis), dmm);
}

// What the editors show must read back as nearly the same position, except between -1 and 0
// where the letter deliberately follows the truncated degrees.
void tst_LocationHelper::formattedTextsParseBack()
{
    const LocationHelper &helper = LocationHelper::shared();
    for (double value = -180.0; value <= 180.0; value += 0.7731) {
        if (value > -1.0 && value < 0.0)
            continue;
        const CoordinateAxis axis
            = std::abs(value) <= 90.0 ? CoordinateAxis::Latitude : CoordinateAxis::Longitude;
        const QString dms = helper.formatToDMS(value, axis);
        const QString dmm = helper.formatToDMM(value, axis);
        const auto fromDms = helper.parseCoordinateString(dms).latitude;
        const auto fromDmm = helper.parseCoordinateString(dmm).latitude;
        QVERIFY2(fromDms && std::abs(*fromDms - value) <= 0.005 / 3600.0 + 1e-12, qPrintable(dms));
        QVERIFY2(fromDmm && std::abs(*fromDmm - value) <= 0.0005 / 60.0 + 1e-12, qPrintable(dmm));
    }
}

void tst_LocationHelper::truncateDecimalString_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("after");
    QTest::addColumn<QString>("expected");

    QTest::newRow("cut") << u"+48.858400"_s << 3 << u"+48.858…"_s;
    QTest::newRow("shorter than the limit") << u"+48.85"_s << 3 << u"+48.85"_s;
    QTest::newRow("exactly the limit") << u"+48.858"_s << 3 << u"+48.858"_s;
    QTest::newRow("no point") << u"48"_s << 3 << u"48"_s;
    QTest::newRow("empty") << QString() << 3 << QString();
    QTest::newRow("no decimals kept") << u"1.2345"_s << 0 << u"1.…"_s;
    QTest::newRow("point at the end") << u"1."_s << 2 << u"1."_s;
    QTest::newRow("first point counts") << u"1.2.3"_s << 1 << u"1.2…"_s;
    QTest::newRow("surrogate pair is one character") << u"1.😀😀"_s << 1 << u"1.😀…"_s;
}

void tst_LocationHelper::truncateDecimalString()
{
    QFETCH(QString, text);
    QFETCH(int, after);
    QFETCH(QString, expected);
    QCOMPARE(LocationHelper::shared().truncateDecimalString(text, after), expected);
}

void tst_LocationHelper::addPlusOrMinusToValues_data()
{
    QTest::addColumn<QString>("latitude");
    QTest::addColumn<QString>("longitude");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("signs") << u"48.8584"_s << u"-2.5"_s << QStringList {u"+48.8584"_s, u"-2.5"_s};
    QTest::newRow("shortest text")
        << u"48.858400"_s << u"+2.294500"_s << QStringList {u"+48.8584"_s, u"+2.2945"_s};
    QTest::newRow("zero is positive") << u"0"_s << u"0.000"_s << QStringList {u"+0"_s, u"+0"_s};
    QTest::newRow("negative zero") << u"-0"_s << u"-0.0"_s << QStringList {u"+0"_s, u"+0"_s};
    QTest::newRow("other notations") << u"1e1"_s << u"0x10"_s << QStringList {u"+10"_s, u"+16"_s};
    QTest::newRow("unreadable") << u"abc"_s << u"1"_s << QStringList();
    QTest::newRow("empty") << u"1"_s << QString() << QStringList();
}

void tst_LocationHelper::addPlusOrMinusToValues()
{
    QFETCH(QString, latitude);
    QFETCH(QString, longitude);
    QFETCH(QStringList, expected);
    const auto texts = LocationHelper::shared().addPlusOrMinusToValues(latitude, longitude);
    QCOMPARE(texts.has_value(), !expected.isEmpty());
    if (texts)
        QCOMPARE((QStringList {texts->first, texts->second}), expected);
}

QTEST_GUILESS_MAIN(tst_LocationHelper)
#include "tst_LocationHelper.moc"
