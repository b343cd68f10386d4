#include "output/ItemOutputFormatter.h"
#include "output/JSONItemOutputFormatter.h"
#include "session/Node.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_ItemOutputFormatter : public QObject
{
    Q_OBJECT

private slots:
    void boolAndNullModes_data();
    void boolAndNullModes();
    void dateModes_data();
    void dateModes();
    void numbersAreDecimal();
};

void tst_ItemOutputFormatter::boolAndNullModes_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("trueText");
    QTest::addColumn<QString>("falseText");
    QTest::addColumn<QString>("nullText");
    QTest::newRow("0") << 0 << u"true"_s << u"false"_s << u""_s;
    QTest::newRow("1") << 1 << u"yes"_s << u"no"_s << u"Null"_s;
    QTest::newRow("2") << 2 << u"TRUE"_s << u"FALSE"_s << u"nil"_s;
    QTest::newRow("3, nul with one l") << 3 << u"YES"_s << u"NO"_s << u"nul"_s;
    QTest::newRow("4") << 4 << u"1"_s << u"0"_s << u"none"_s;
    QTest::newRow("9 falls back") << 9 << u"true"_s << u"false"_s << u""_s;
}

void tst_ItemOutputFormatter::boolAndNullModes()
{
    QFETCH(int, mode);
    DataModelSnapshot snapshot;
    snapshot.boolValuesMode = mode;
    snapshot.nullValuesMode = mode;
    const ItemOutputFormatter formatter(snapshot);
    QTEST(formatter.formatBoolValue(true, u"x"_s), "trueText");
    QTEST(formatter.formatBoolValue(false, u"x"_s), "falseText");
    QTEST(formatter.formatNullValue(u"x"_s), "nullText");
}

void tst_ItemOutputFormatter::dateModes_data()
{
    QTest::addColumn<bool>("json");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("expected");
    QTest::newRow("date only") << false << 0 << u"2024-03-05"_s;
    QTest::newRow("24-hour") << false << 1 << u"2024-03-05 15:04:05"_s;
    QTest::newRow("12-hour with AM/PM") << false << 2 << u"2024-03-05 03:04:05 PM"_s;
    QTest::newRow("json 24-hour") << true << 1 << u"2024-03-05 15:04:05"_s;
}

void tst_ItemOutputFormatter::dateModes()
{
    QFETCH(bool, json);
    QFETCH(int, mode);
    DataModelSnapshot snapshot;
    // Each formatter must follow its own mode and ignore the other one.
    snapshot.dateFormatMode = json ? 7 : mode;
    snapshot.jsonDateFormatMode = json ? mode : 7;
    // Written in local time, as the user's clock shows it.
    const QDateTime date(QDate(2024, 3, 5), QTime(15, 4, 5));
    const QString text = json ? JSONItemOutputFormatter(snapshot).formatDate(date, {})
                              : ItemOutputFormatter(snapshot).formatDate(date, {});
    QTEST(text, "expected");
    // The same instant given in another zone is written in local time all the same.
    QCOMPARE(ItemOutputFormatter(snapshot).formatDate(date.toUTC(), {}),
             ItemOutputFormatter(snapshot).formatDate(date, {}));
}

void tst_ItemOutputFormatter::numbersAreDecimal()
{
    DataModelSnapshot snapshot;
    snapshot.dateFormatMode = 7;
    const ItemOutputFormatter formatter(snapshot);
    QCOMPARE(formatter.formatNumber(1234567, {}), u"1234567"_s);
    QCOMPARE(formatter.formatNumber(-3, {}), u"-3"_s);
    // Modes beyond the fixed patterns use the medium date and short time of the preview table.
    const QDateTime date(QDate(2024, 3, 5), QTime(15, 4, 5));
    QCOMPARE(formatter.formatDate(date, {}), Node::formatDisplayDate(date));
    QVERIFY(formatter.formatDate(date, {}).contains(u"2024"_s));
}

QTEST_GUILESS_MAIN(tst_ItemOutputFormatter)
#include "tst_ItemOutputFormatter.moc"
