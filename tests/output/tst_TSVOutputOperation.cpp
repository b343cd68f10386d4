#include "OutputFixture.h"
#include "output/CopyToExcelOutputOperation.h"
#include "output/TSVOutputOperation.h"

#include "TestSupport.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_TSVOutputOperation : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void workedExample();
    void settings_data();
    void settings();
    void valueKinds();
    void cancelledRunDeliversNothing();

private:
    OutputFixture m_files;
    NodePtr m_a, m_b;
};

void tst_TSVOutputOperation::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    m_a = m_files.file(u"a.jpg"_s);
    m_b = m_files.file(u"b.jpg"_s);
    // b has been read, but has no city.
    m_files.store(m_b, u"Country"_s, u"France"_s);
}

void tst_TSVOutputOperation::workedExample()
{
    m_files.store(m_a, u"City"_s, u"Paris"_s);
    DataModelSnapshot snapshot;
    snapshot.includeColumnTitlesMode = 1;
    snapshot.columnList = {u"name"_s, u"City"_s};
    QCOMPARE(OutputFixture::run<TSVOutputOperation>(snapshot, OutputFixture::list({m_a, m_b})),
             u"\"Name (with file extension)\"\t\"City\"\n"
             "\"a.jpg\"\t\"Paris\"\n"
             "\"b.jpg\"\t\"\"\n"_s);
}

void tst_TSVOutputOperation::settings_data()
{
    QTest::addColumn<bool>("excel");
    QTest::addColumn<QStringList>("columns");
    QTest::addColumn<int>("titles");
    QTest::addColumn<bool>("quote");
    QTest::addColumn<int>("multiLine");
    QTest::addColumn<int>("linebreaks");
    QTest::addColumn<QString>("city");
    QTest::addColumn<QString>("expected");

    const QStringList nameCity = {u"name"_s, u"City"_s};
    QTest::newRow("quote doubled inside quotes")
        << false << nameCity << 0 << true << 0 << 0 << u"a\"b"_s
        << u"\"a.jpg\"\t\"a\"\"b\"\n\"b.jpg\"\t\"\"\n"_s;
    QTest::newRow("quote doubled without quoting")
        << false << nameCity << 0 << false << 0 << 0 << u"a\"b"_s << u"a.jpg\ta\"\"b\nb.jpg\t\n"_s;
    QTest::newRow("a tab breaks the columns when not encoded")
        << false << nameCity << 0 << false << 0 << 0 << u"x\ty\nz"_s
        << u"a.jpg\tx\ty\nz\nb.jpg\t\n"_s;
    QTest::newRow("multi-line encodes breaks and tabs")
        << false << nameCity << 0 << false << 1 << 0 << u"x\ty\r\nz"_s
        << u"a.jpg\tx\\ty\\r\\nz\nb.jpg\t\n"_s;
    QTest::newRow("carriage return")
        << false << nameCity << 0 << false << 0 << 1 << u"P"_s << u"a.jpg\tP\rb.jpg\t\r"_s;
    QTest::newRow("carriage return and line feed")
        << false << nameCity << 0 << false << 0 << 2 << u"P"_s << u"a.jpg\tP\r\nb.jpg\t\r\n"_s;
    QTest::newRow("unknown break mode is a line feed")
        << false << nameCity << 0 << false << 0 << 5 << u"P"_s << u"a.jpg\tP\nb.jpg\t\n"_s;
    QTest::newRow("spreadsheet always breaks with a line feed")
        << true << nameCity << 1 << true << 0 << 2 << u"P"_s
        << u"\"Name (with file extension)\"\t\"City\"\n\"a.jpg\"\t\"P\"\n\"b.jpg\"\t\"\"\n"_s;
    // A column without a display name has an empty title, and still its tag space.
    QTest::newRow("titles with tag space abbreviations")
        << false << QStringList {u"name"_s, u"City"_s, u"DateTimeOriginal"_s, u"no_such_key"_s} << 2
        << false << 0 << 0 << u"P"_s
        << u"Name (with file extension)\tCity (IPTC)\t (EXIF)\t\n"
           "a.jpg\tP\t\t\nb.jpg\t\t\t\n"_s;
    QTest::newRow("spreadsheet titles with abbreviations")
        << true << QStringList {u"City"_s, u"GPSLatitude#"_s} << 2 << true << 0 << 1 << u"P"_s
        << u"\"City (IPTC)\"\t\"Latitude (GPS)\"\n\"P\"\t\"\"\n\"\"\t\"\"\n"_s;
    QTest::newRow("no columns gives empty rows")
        << false << QStringList() << 1 << true << 0 << 0 << u"P"_s << u"\n\n\n"_s;
}

void tst_TSVOutputOperation::settings()
{
    QFETCH(bool, excel);
    QFETCH(QStringList, columns);
    QFETCH(QString, city);
    m_files.store(m_a, u"City"_s, city);
    DataModelSnapshot snapshot;
    snapshot.columnList = columns;
    QFETCH(int, titles);
    QFETCH(bool, quote);
    QFETCH(int, multiLine);
    QFETCH(int, linebreaks);
    snapshot.includeColumnTitlesMode = titles;
    snapshot.quoteStrings = quote;
    snapshot.multiLineMode = multiLine;
    snapshot.linebreaksMode = linebreaks;
    const FlatFileListPtr list = OutputFixture::list({m_a, m_b});
    const std::optional<QString> text = excel
        ? OutputFixture::run<CopyToExcelOutputOperation>(snapshot, list)
        : OutputFixture::run<TSVOutputOperation>(snapshot, list);
    QVERIFY(text);
    QTEST(*text, "expected");
}

void tst_TSVOutputOperation::valueKinds()
{
    const NodePtr c = m_files.file(u"c.jpg"_s);
    m_files.store(c, u"DateTimeOriginal"_s, QDateTime(QDate(2024, 3, 5), QTime(15, 4, 5)));
    m_files.store(c, u"ImageEditor"_s, true);
    m_files.store(c, u"ImageWidth"_s, qint64(4032));
    DataModelSnapshot snapshot;
    snapshot.columnList = {u"DateTimeOriginal"_s, u"ImageEditor"_s, u"ImageWidth"_s, u"City"_s};
    snapshot.dateFormatMode = 1;
    snapshot.boolValuesMode = 3;
    snapshot.nullValuesMode = 1;
    // Every value is quoted, whatever its kind, the empty one's text included.
    QCOMPARE(OutputFixture::run<TSVOutputOperation>(snapshot, OutputFixture::list({c})),
             u"\"2024-03-05 15:04:05\"\t\"YES\"\t\"4032\"\t\"Null\"\n"_s);
}

void tst_TSVOutputOperation::cancelledRunDeliversNothing()
{
    DataModelSnapshot snapshot;
    snapshot.columnList = {u"name"_s};
    QCOMPARE(OutputFixture::run<TSVOutputOperation>(snapshot, OutputFixture::list({m_a}), true),
             std::nullopt);
    // Progress counts the items done against the list's total.
    auto operation
        = std::make_shared<TSVOutputOperation>(snapshot, nullptr, OutputFixture::list({m_a, m_b}));
    QCOMPARE(operation->totalFileCount(), 2);
    QCOMPARE(operation->currentFileCount(), 0);
    operation->main();
    QCOMPARE(operation->currentFileCount(), 2);
    QCOMPARE(operation->type(), OutputOperationTypeEnum::computingOutput);
}

QTEST_GUILESS_MAIN(tst_TSVOutputOperation)
#include "tst_TSVOutputOperation.moc"
