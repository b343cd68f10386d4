#include "OutputFixture.h"
#include "output/CopyToHTMLEditorOutputOperation.h"
#include "output/HTMLOutputOperation.h"

#include "TestSupport.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_HTMLOutputOperation : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void workedExample();
    void escaping_data();
    void escaping();
    void headerAndClassModes_data();
    void headerAndClassModes();
    void cancelledRunDeliversNothing();

private:
    OutputFixture m_files;
    NodePtr m_a;
};

namespace {

const QString tabHead = u"<!DOCTYPE html>\n<html>\n\t<head>\n\t\t<title>File List</title>\n"
                        "\t\t<meta charset=\"UTF-8\">\n\t</head>\n\t<body>\n"_s;
const QString tabFoot = u"\t</body>\n</html>\n"_s;

} // namespace

void tst_HTMLOutputOperation::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    m_a = m_files.file(u"a.jpg"_s);
}

void tst_HTMLOutputOperation::workedExample()
{
    m_files.store(m_a, u"City"_s, u"Paris"_s);
    DataModelSnapshot snapshot;
    snapshot.htmlColumnIdHeaderMode = 1;
    snapshot.columnList = {u"name"_s, u"City"_s};
    const QString expected = tabHead
        + u"\t\t<table>\n"
          "\t\t\t<tr>\n"
          "\t\t\t\t<th>Name (with file extension)</th>\n"
          "\t\t\t\t<th>City</th>\n"
          "\t\t\t</tr>\n"
          "\t\t\t<tr>\n"
          "\t\t\t\t<td>a.jpg</td>\n"
          "\t\t\t\t<td>Paris</td>\n"
          "\t\t\t</tr>\n"
          "\t\t</table>\n"_s
        + tabFoot;
    const FlatFileListPtr list = OutputFixture::list({m_a});
    QCOMPARE(OutputFixture::run<HTMLOutputOperation>(snapshot, list), expected);
    // The editor form is the same page; only where it goes differs.
    QCOMPARE(OutputFixture::run<CopyToHTMLEditorOutputOperation>(snapshot, list), expected);
}

void tst_HTMLOutputOperation::escaping_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("cell");
    QTest::newRow("markup") << u"R&D <5>"_s << u"R&amp;D &lt;5&gt;"_s;
    QTest::newRow("quotes") << u"\"it's\""_s << u"&quot;it&#39;s&quot;"_s;
    QTest::newRow("currency and marks") << u"¢£¥©®€"_s << u"&cent;&pound;&yen;&copy;&reg;&euro;"_s;
    QTest::newRow("others stand") << u"Zürich ½ 東京 \\n"_s << u"Zürich ½ 東京 \\n"_s;
}

void tst_HTMLOutputOperation::escaping()
{
    QFETCH(QString, value);
    m_files.store(m_a, u"City"_s, value);
    DataModelSnapshot snapshot;
    snapshot.htmlIndentationMode = 0;
    snapshot.columnList = {u"City"_s};
    const std::optional<QString> text
        = OutputFixture::run<HTMLOutputOperation>(snapshot, OutputFixture::list({m_a}));
    QVERIFY(text);
    QFETCH(QString, cell);
    QVERIFY2(text->contains(u"<tr>\n<td>"_s + cell + u"</td>\n</tr>"_s), qPrintable(*text));
}

void tst_HTMLOutputOperation::headerAndClassModes_data()
{
    QTest::addColumn<int>("indentation");
    QTest::addColumn<int>("linebreaks");
    QTest::addColumn<int>("header");
    QTest::addColumn<int>("classes");
    QTest::addColumn<QString>("table");

    QTest::newRow("no header, no classes, no indentation")
        << 0 << 0 << 0 << 0
        << u"<table>\n<tr>\n<td>a.jpg</td>\n<td>Paris</td>\n</tr>\n</table>\n"_s;
    QTest::newRow("counted ids and classes, one blank")
        << 2 << 0 << 2 << 1
        << u"  <table>\n   <tr>\n"
           "    <th id=\"qrd_th_0\">Name (with file extension)</th>\n"
           "    <th id=\"qrd_th_1\">City</th>\n"
           "   </tr>\n   <tr>\n"
           "    <td class =\"qrd_td_1\">a.jpg</td>\n"
           "    <td class =\"qrd_td_2\">Paris</td>\n"
           "   </tr>\n  </table>\n"_s;
    QTest::newRow("ids and classes by key, carriage returns")
        << 0 << 1 << 3 << 2
        << u"<table>\r<tr>\r<th id=\"qrd_th_name\">Name (with file extension)</th>\r"
           "<th id=\"qrd_th_City\">City</th>\r</tr>\r<tr>\r"
           "<td class =\"qrd_td_name\">a.jpg</td>\r<td class =\"qrd_td_City\">Paris</td>\r"
           "</tr>\r</table>\r"_s;
    QTest::newRow("unknown modes: plain header and cells")
        << 0 << 0 << 8 << 8
        << u"<table>\n<tr>\n<th>Name (with file extension)</th>\n<th>City</th>\n</tr>\n"
           "<tr>\n<td>a.jpg</td>\n<td>Paris</td>\n</tr>\n</table>\n"_s;
}

void tst_HTMLOutputOperation::headerAndClassModes()
{
    m_files.store(m_a, u"City"_s, u"Paris"_s);
    QFETCH(int, indentation);
    QFETCH(int, linebreaks);
    QFETCH(int, header);
    QFETCH(int, classes);
    DataModelSnapshot snapshot;
    snapshot.htmlIndentationMode = indentation;
    snapshot.linebreaksMode = linebreaks;
    snapshot.htmlColumnIdHeaderMode = header;
    snapshot.htmlColumnClassMode = classes;
    snapshot.columnList = {u"name"_s, u"City"_s};
    const std::optional<QString> text
        = OutputFixture::run<HTMLOutputOperation>(snapshot, OutputFixture::list({m_a}));
    QVERIFY(text);
    const QString unit = indentation == 2 ? u" "_s : QString();
    const QString b = linebreaks == 1 ? u"\r"_s : u"\n"_s;
    const QString head = u"<!DOCTYPE html>"_s + b + u"<html>"_s + b + unit + u"<head>"_s + b + unit
        + unit + u"<title>File List</title>"_s + b + unit + unit + u"<meta charset=\"UTF-8\">"_s + b
        + unit + u"</head>"_s + b + unit + u"<body>"_s + b;
    const QString foot = unit + u"</body>"_s + b + u"</html>"_s + b;
    QFETCH(QString, table);
    QCOMPARE(*text, head + table + foot);
}

void tst_HTMLOutputOperation::cancelledRunDeliversNothing()
{
    DataModelSnapshot snapshot;
    snapshot.columnList = {u"name"_s};
    QCOMPARE(OutputFixture::run<HTMLOutputOperation>(snapshot, OutputFixture::list({m_a}), true),
             std::nullopt);
}

QTEST_GUILESS_MAIN(tst_HTMLOutputOperation)
#include "tst_HTMLOutputOperation.moc"
