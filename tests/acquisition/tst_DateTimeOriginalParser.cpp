#include "acquisition/DateTimeOriginalParser.h"

#include <QTest>

#include <ctime>
#include <optional>

using namespace Qt::StringLiterals;

using Instant = std::optional<QDateTime>;

class tst_DateTimeOriginalParser : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void parseISO8601_data();
    void parseISO8601();
    void addSubSeconds_data();
    void addSubSeconds();
    void localZoneIsFixedAtCreation();
};

namespace {

// Far from UTC, so that a zone read wrongly shows.
const QByteArray testZone = "America/New_York";

QDateTime local(int hour, int minute, int second, int msec = 0)
{
    return QDateTime(QDate(2021, 7, 4), QTime(hour, minute, second, msec), QTimeZone(testZone));
}

QDateTime utc(int hour, int minute, int second, int msec = 0)
{
    return QDateTime(QDate(2021, 7, 4), QTime(hour, minute, second, msec), QTimeZone::utc());
}

} // namespace

void tst_DateTimeOriginalParser::initTestCase()
{
    qputenv("TZ", testZone);
    tzset();
}

void tst_DateTimeOriginalParser::parseISO8601_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<Instant>("expected");

    QTest::newRow("colons, local zone") << u"2021:07:04 12:30:15"_s << Instant(local(12, 30, 15));
    QTest::newRow("dashes, local zone") << u"2021-07-04 12:30:15"_s << Instant(local(12, 30, 15));
    QTest::newRow("no seconds") << u"2021:07:04 12:30"_s << Instant(local(12, 30, 0));
    QTest::newRow("offset with colons")
        << u"2021:07:04 12:30:15+02:00"_s << Instant(utc(10, 30, 15));
    QTest::newRow("offset with dashes")
        << u"2021-07-04 12:30:15-05:00"_s << Instant(utc(17, 30, 15));
    QTest::newRow("offset without colon")
        << u"2021:07:04 12:30:15+0200"_s << Instant(utc(10, 30, 15));
    QTest::newRow("Z is dropped, local zone")
        << u"2021-07-04T12:30:15Z"_s << Instant(local(12, 30, 15));
    QTest::newRow("lower-case z too") << u"2021-07-04T12:30:15z"_s << Instant(local(12, 30, 15));
    QTest::newRow("fraction before offset")
        << u"2021:07:04 12:30:15.250+02:00"_s << Instant(utc(10, 30, 15, 250));
    QTest::newRow("fraction, local zone")
        << u"2021:07:04 12:30:15.5"_s << Instant(local(12, 30, 15, 500));
    QTest::newRow("fraction with T and Z")
        << u"2021-07-04T12:30:15.125Z"_s << Instant(local(12, 30, 15, 125));
    QTest::newRow("unreadable fraction is 0, still removed")
        << u"2021:07:04 12:30:15.x"_s << Instant(local(12, 30, 15));
    QTest::newRow("fraction finer than milliseconds rounds")
        << u"2021:07:04 12:30:15.1239"_s << Instant(local(12, 30, 15, 124));
    QTest::newRow("lower-case t fails") << u"2021-07-04t12:30:15"_s << Instant();
    QTest::newRow("date only") << u"2021:07:04"_s << Instant();
    QTest::newRow("not a date") << u"yesterday at noon"_s << Instant();
    QTest::newRow("empty") << QString() << Instant();
    QTest::newRow("month out of range") << u"2021:13:04 12:30:15"_s << Instant();
}

void tst_DateTimeOriginalParser::parseISO8601()
{
    QFETCH(QString, text);
    QFETCH(Instant, expected);
    const DateTimeOriginalParser parser;
    const Instant parsed = parser.parseISO8601(text);
    QCOMPARE(parsed.has_value(), expected.has_value());
    if (expected)
        QCOMPARE(parsed->toMSecsSinceEpoch(), expected->toMSecsSinceEpoch());
}

void tst_DateTimeOriginalParser::addSubSeconds_data()
{
    QTest::addColumn<QString>("subSeconds");
    QTest::addColumn<int>("addedMilliseconds");

    QTest::newRow("25") << u"25"_s << 250;
    QTest::newRow("250") << u"250"_s << 250;
    QTest::newRow("5") << u"5"_s << 500;
    QTest::newRow("empty") << QString() << 0;
    QTest::newRow("abc") << u"abc"_s << 0;
    QTest::newRow("leading space") << u" 5"_s << 0;
    QTest::newRow("sign") << u"-5"_s << 0;
}

void tst_DateTimeOriginalParser::addSubSeconds()
{
    QFETCH(QString, subSeconds);
    QFETCH(int, addedMilliseconds);
    const QDateTime start = utc(12, 0, 0);
    const QDateTime result = DateTimeOriginalParser().add(subSeconds, start);
    QCOMPARE(start.msecsTo(result), qint64(addedMilliseconds));
}

void tst_DateTimeOriginalParser::localZoneIsFixedAtCreation()
{
    const DateTimeOriginalParser parser;
    qputenv("TZ", "Asia/Tokyo");
    tzset();
    const Instant parsed = parser.parseISO8601(u"2021:07:04 12:30:15"_s);
    qputenv("TZ", testZone);
    tzset();
    QVERIFY(parsed);
    QCOMPARE(parsed->toMSecsSinceEpoch(), local(12, 30, 15).toMSecsSinceEpoch());
}

QTEST_GUILESS_MAIN(tst_DateTimeOriginalParser)
#include "tst_DateTimeOriginalParser.moc"
