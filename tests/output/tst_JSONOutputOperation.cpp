#include "OutputFixture.h"
#include "output/JSONOutputOperation.h"

#include "TestSupport.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_JSONOutputOperation : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void workedExample();
    void settings_data();
    void settings();
    void emptyListAndCancellation();

private:
    OutputFixture m_files;
    NodePtr m_a, m_b;
};

void tst_JSONOutputOperation::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    m_a = m_files.file(u"a.jpg"_s);
    m_b = m_files.file(u"b.jpg"_s);
    m_files.store(m_b, u"Country"_s, u"France"_s);
}

void tst_JSONOutputOperation::workedExample()
{
    m_files.store(m_a, u"City"_s, u"Paris"_s);
    DataModelSnapshot snapshot;
    snapshot.columnList = {u"name"_s, u"City"_s};
    QCOMPARE(OutputFixture::run<JSONOutputOperation>(snapshot, OutputFixture::list({m_a, m_b})),
             u"[\n"
             "\t{\n"
             "\t\t\"name\":\"a.jpg\",\n"
             "\t\t\"City\":\"Paris\"\n"
             "\t},\n"
             "\t{\n"
             "\t\t\"name\":\"b.jpg\",\n"
             "\t\t\"City\":null\n"
             "\t}\n"
             "]"_s);
}

void tst_JSONOutputOperation::settings_data()
{
    QTest::addColumn<int>("indentation");
    QTest::addColumn<bool>("quote");
    QTest::addColumn<int>("multiLine");
    QTest::addColumn<int>("linebreaks");
    QTest::addColumn<QStringList>("columns");
    QTest::addColumn<QString>("expected");

    const QStringList nameCity = {u"name"_s, u"City"_s};
    QTest::newRow("no indentation") << 0 << true << 0 << 0 << nameCity
                                    << u"[\n{\n\"name\":\"a.jpg\",\n\"City\":\"Lyon\"\n}\n]"_s;
    QTest::newRow("mode 3 is two blanks")
        << 3 << true << 0 << 0 << nameCity
        << u"[\n  {\n    \"name\":\"a.jpg\",\n    \"City\":\"Lyon\"\n  }\n]"_s;
    QTest::newRow("mode 7 is six blanks, names unquoted")
        << 7 << false << 0 << 0 << QStringList {u"City"_s}
        << u"[\n      {\n            City:\"Lyon\"\n      }\n]"_s;
    QTest::newRow("carriage return and line feed")
        << 1 << true << 0 << 2 << QStringList {u"City"_s}
        << u"[\r\n\t{\r\n\t\t\"City\":\"Lyon\"\r\n\t}\r\n]"_s;
    QTest::newRow("member names: quotes doubled, breaks encoded")
        << 0 << true << 1 << 0 << QStringList {u"we\"ird\tkey"_s}
        << u"[\n{\n\"we\"\"ird\\tkey\":null\n}\n]"_s;
}

void tst_JSONOutputOperation::settings()
{
    m_files.store(m_a, u"City"_s, u"Lyon"_s);
    DataModelSnapshot snapshot;
    QFETCH(int, indentation);
    QFETCH(bool, quote);
    QFETCH(int, multiLine);
    QFETCH(int, linebreaks);
    QFETCH(QStringList, columns);
    snapshot.jsonIndentationMode = indentation;
    snapshot.quoteStrings = quote;
    snapshot.multiLineMode = multiLine;
    snapshot.linebreaksMode = linebreaks;
    snapshot.columnList = columns;
    const std::optional<QString> text
        = OutputFixture::run<JSONOutputOperation>(snapshot, OutputFixture::list({m_a}));
    QVERIFY(text);
    QTEST(*text, "expected");
}

void tst_JSONOutputOperation::emptyListAndCancellation()
{
    DataModelSnapshot snapshot;
    snapshot.columnList = {u"name"_s};
    QCOMPARE(OutputFixture::run<JSONOutputOperation>(snapshot, OutputFixture::list({})), u"[\n]"_s);
    QCOMPARE(OutputFixture::run<JSONOutputOperation>(snapshot, OutputFixture::list({m_a}), true),
             std::nullopt);

    // Values by kind: text with its breaks encoded but its quotes and backslashes kept as they
    // are, dates by the JSON date mode, booleans as literals whatever the bool mode says.
    const NodePtr c = m_files.file(u"c.jpg"_s);
    m_files.store(c, u"City"_s, u"say \"hi\"\\\nbye"_s);
    m_files.store(c, u"DateTimeOriginal"_s, QDateTime(QDate(2024, 3, 5), QTime(15, 4, 5)));
    m_files.store(c, u"ImageEditor"_s, false);
    m_files.store(c, u"ImageWidth"_s, qint64(4032));
    snapshot.columnList
        = {u"City"_s, u"DateTimeOriginal"_s, u"ImageEditor"_s, u"ImageWidth"_s, u"Country"_s};
    snapshot.jsonIndentationMode = 0;
    snapshot.boolValuesMode = 4;
    snapshot.nullValuesMode = 1;
    snapshot.dateFormatMode = 0;
    snapshot.jsonDateFormatMode = 2;
    QCOMPARE(OutputFixture::run<JSONOutputOperation>(snapshot, OutputFixture::list({c})),
             u"[\n{\n"
             "\"City\":\"say \"hi\"\\\\nbye\",\n"
             "\"DateTimeOriginal\":\"2024-03-05 03:04:05 PM\",\n"
             "\"ImageEditor\":false,\n"
             "\"ImageWidth\":4032,\n"
             "\"Country\":null\n"
             "}\n]"_s);
}

QTEST_GUILESS_MAIN(tst_JSONOutputOperation)
#include "tst_JSONOutputOperation.moc"
