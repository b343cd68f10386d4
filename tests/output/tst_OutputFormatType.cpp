#include "OutputFixture.h"
#include "RecordingDoubles.h"
#include "output/CSVOutputFormat.h"
#include "output/CopyToExcelFormat.h"
#include "output/CopyToHTMLEditorOutputFormat.h"
#include "output/HTMLOutputFormat.h"
#include "output/JSONOutputFormat.h"
#include "output/OutputFileWriter.h"
#include "output/TSVOutputFormat.h"
#include "platform/ClipboardWriter.h"
#include "session/DataModel.h"

#include "TestSupport.h"

#include <QDirIterator>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System);
}

} // namespace

class tst_OutputFormatType : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void encodings_data();
    void encodings();
    void fileTypes_data();
    void fileTypes();
    void failedSaveLeavesEarlierFileAlone();
    void copyingFormatsFillTheClipboard();
    void mapFormatHasNothingToSave();
    void engineReformatsOnSettingsAndSavesTheText();

private:
    QTemporaryDir m_dir;
};

void tst_OutputFormatType::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
}

void tst_OutputFormatType::cleanup()
{
    ClipboardWriter::install(nullptr);
}

void tst_OutputFormatType::encodings_data()
{
    QTest::addColumn<int>("encodingMode");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("message");
    const QString text = u"Zürich\t€ 😀\n"_s;
    QTest::newRow("UTF-8") << 0 << text.toUtf8() << QString();
    QTest::newRow("unknown mode is UTF-8") << 7 << text.toUtf8() << QString();
    QTest::newRow("UTF-16 with byte order mark")
        << 1
        << QByteArray("\xFF\xFE"
                      "Z\0\xFC\0r\0i\0c\0h\0\t\0\xAC\x20 \0\x3D\xD8\x00\xDE\n\0",
                      26)
        << QString();
    QTest::newRow("ISO Latin 1 replaces and reports")
        << 2 << QByteArray("Z\xFCrich\t? ?\n")
        << u"ISO Latin 1 cannot hold €, 😀, so each was saved as \"?\"."_s;
}

void tst_OutputFormatType::encodings()
{
    QFETCH(int, encodingMode);
    DataModelSnapshot snapshot;
    snapshot.encodingMode = encodingMode;
    TSVOutputFormat format;
    const QString path = m_dir.filePath(u"encoded-%1.tsv"_s.arg(encodingMode));
    const CommitResult result = format.performCommitAction(u"Zürich\t€ 😀\n"_s, snapshot, path);
    QVERIFY2(result.success, qPrintable(result.message));
    QCOMPARE(result.filePath, path);
    QTEST(result.message, "message");
    QTEST(contents(path), "bytes");
}

void tst_OutputFormatType::fileTypes_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QStringList>("allowed");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("savedAs");
    QTest::newRow("TSV, bare name")
        << int(OutputFormatIndexEnum::TSV) << QStringList {u"tsv"_s, u"txt"_s} << u"list"_s
        << u"list.tsv"_s;
    QTest::newRow("TSV, second type kept")
        << int(OutputFormatIndexEnum::TSV) << QStringList {u"tsv"_s, u"txt"_s} << u"list.txt"_s
        << u"list.txt"_s;
    QTest::newRow("JSON, other type") << int(OutputFormatIndexEnum::JSON) << QStringList {u"json"_s}
                                      << u"list.txt"_s << u"list.txt.json"_s;
    QTest::newRow("HTML, upper case kept")
        << int(OutputFormatIndexEnum::HTML) << QStringList {u"html"_s, u"htm"_s} << u"LIST.HTM"_s
        << u"LIST.HTM"_s;
    QTest::newRow("KML") << int(OutputFormatIndexEnum::KML) << QStringList {u"kml"_s} << u"places"_s
                         << u"places.kml"_s;
    QTest::newRow("GPX") << int(OutputFormatIndexEnum::GPX) << QStringList {u"gpx"_s}
                         << u"places.xml"_s << u"places.xml.gpx"_s;
    QTest::newRow("map format") << int(OutputFormatIndexEnum::CSV) << QStringList {u"csv"_s}
                                << QString() << QString();
    QTest::newRow("spreadsheet form") << int(OutputFormatIndexEnum::CopyToExcel)
                                      << QStringList {u"tsv"_s, u"txt"_s} << QString() << QString();
}

void tst_OutputFormatType::fileTypes()
{
    QFETCH(int, format);
    QFETCH(QString, name);
    // The engine builds one object for each format once.
    auto engine = OutputEngine::create(nullptr);
    OutputFormatType *object = engine->outputFormatObject(OutputFormatIndexEnum(format));
    QVERIFY(object);
    QCOMPARE(engine->outputFormatObject(OutputFormatIndexEnum(format)), object);
    QTEST(object->allowedFileTypes(), "allowed");
    if (name.isEmpty())
        return;
    QCOMPARE(object->commitKind(), CommitKind::SaveToFile);
    const CommitResult result
        = object->performCommitAction(u"text"_s, DataModelSnapshot(), m_dir.filePath(name));
    QVERIFY2(result.success, qPrintable(result.message));
    QFETCH(QString, savedAs);
    QCOMPARE(result.filePath, m_dir.filePath(savedAs));
    QCOMPARE(contents(m_dir.filePath(savedAs)), QByteArray("text"));
}

void tst_OutputFormatType::failedSaveLeavesEarlierFileAlone()
{
    QTemporaryDir folder;
    JSONOutputFormat format;
    const QString earlier = folder.filePath(u"list.json"_s);
    QVERIFY(format.performCommitAction(u"[old]"_s, {}, earlier).success);

    // Overwriting goes through a temporary file that is renamed, and leaves nothing behind.
    CommitResult result = format.performCommitAction(u"[new]"_s, {}, earlier);
    QVERIFY(result.success);
    QCOMPARE(contents(earlier), QByteArray("[new]"));
    QCOMPARE(filesIn(folder.path()), QStringList {u"list.json"_s});

    // A folder in the way: nothing is written and the folder's file is untouched.
    QVERIFY(QDir(folder.path()).mkdir(u"taken.json"_s));
    const QString inside = folder.filePath(u"taken.json/keep.json"_s);
    QVERIFY(format.performCommitAction(u"[keep]"_s, {}, inside).success);
    result = format.performCommitAction(u"[lost]"_s, {}, folder.filePath(u"taken.json"_s));
    QVERIFY(!result.success);
    QVERIFY2(result.message.startsWith(u"Could not save the list as \""_s + folder.path()),
             qPrintable(result.message));
    QCOMPARE(contents(inside), QByteArray("[keep]"));
    QCOMPARE(filesIn(folder.path()), QStringList {u"list.json"_s});

    // A folder that does not exist.
    result = format.performCommitAction(u"[x]"_s, {}, folder.filePath(u"missing/list.json"_s));
    QVERIFY(!result.success);
    QVERIFY(result.message.contains(u"missing/list.json"_s));
    QVERIFY(!QFileInfo::exists(folder.filePath(u"missing"_s)));

    result = format.performCommitAction(u"[x]"_s, {}, QString());
    QVERIFY(!result.success);
    QVERIFY(!result.message.isEmpty());
}

void tst_OutputFormatType::copyingFormatsFillTheClipboard()
{
    const QString table = u"\"a\"\t\"b\"\n"_s;
    CopyToExcelFormat excel;
    QCOMPARE(excel.commitKind(), CommitKind::CopyToClipboard);
    // Without a clipboard the copy fails with a message.
    CommitResult result = excel.performCommitAction(table, {}, {});
    QVERIFY(!result.success);
    QCOMPARE(result.message, u"Could not put the list on the clipboard."_s);

    RecordingClipboard clipboard;
    ClipboardWriter::install(&clipboard);
    // The encoding is for files only: the clipboard takes the text as it is.
    DataModelSnapshot latin1;
    latin1.encodingMode = 2;
    QVERIFY(excel.performCommitAction(table + u"€"_s, latin1, {}).success);
    CopyToHTMLEditorOutputFormat editor;
    QCOMPARE(editor.commitKind(), CommitKind::CopyToClipboard);
    const QString page = u"<table><tr><td>a</td></tr></table>"_s;
    QVERIFY(editor.performCommitAction(page, {}, {}).success);

    QCOMPARE(clipboard.written.size(), 2);
    QCOMPARE(clipboard.written[0].plainText, table + u"€"_s);
    QCOMPARE(clipboard.written[0].html, std::nullopt);
    QCOMPARE(clipboard.written[1].plainText, page);
    QCOMPARE(clipboard.written[1].html, std::optional(page));
}

void tst_OutputFormatType::mapFormatHasNothingToSave()
{
    CSVOutputFormat format;
    const QString path = m_dir.filePath(u"map.csv"_s);
    const CommitResult result = format.performCommitAction(QString(), {}, path);
    QVERIFY(!result.success);
    QVERIFY(!result.message.isEmpty());
    QVERIFY(!QFileInfo::exists(path));
}

void tst_OutputFormatType::engineReformatsOnSettingsAndSavesTheText()
{
    OutputFixture files;
    files.file(u"a.jpg"_s);
    files.file(u"b.jpg"_s);
    UserDefaults &defaults = UserDefaults::standard();
    defaults.setObject(QStringList(), u"brisk_sources"_s);
    defaults.setObject(QStringList {u"name"_s}, u"brisk_columns"_s);
    defaults.setObject(int(OutputFormatIndexEnum::TSV), u"outputFormat"_s);
    DataModel model;
    auto engine = OutputEngine::create(&model);
    engine->startListening();
    model.sourceList.add({files.path()}, false);
    const auto waitFor = [&](const QString &text) {
        return TestSupport::waitUntil([&] { return engine->currentOutputString() == text; });
    };
    QVERIFY(waitFor(u"\"a.jpg\"\n\"b.jpg\"\n"_s));
    const FlatFileListPtr list = engine->flatFileList();

    // Output settings changed in the stored preferences re-format the same list.
    defaults.setObject(1, u"includeColumnTitlesMode"_s);
    defaults.setObject(false, u"quoteStrings"_s);
    QVERIFY(waitFor(u"Name (with file extension)\na.jpg\nb.jpg\n"_s));
    defaults.setObject(int(OutputFormatIndexEnum::JSON), u"outputFormat"_s);
    defaults.setObject(0, u"jsonIndentationMode"_s);
    QVERIFY(waitFor(u"[\n{\nname:\"a.jpg\"\n},\n{\nname:\"b.jpg\"\n}\n]"_s));
    QVERIFY(TestSupport::waitUntil([&] { return engine->queue().operationCount() == 0; }));
    QCOMPARE(engine->flatFileList(), list);

    // The encoding is read when saving, without a new run.
    model.encodingMode->setValue(1);
    QCOMPARE(engine->queue().operationCount(), 0);
    const CommitResult result = engine->performCommitAction(m_dir.filePath(u"engine"_s));
    QVERIFY2(result.success, qPrintable(result.message));
    QCOMPARE(result.filePath, m_dir.filePath(u"engine.json"_s));
    QCOMPARE(contents(result.filePath).size(), 2 + 2 * engine->currentOutputString()->size());
    QVERIFY(contents(result.filePath).startsWith("\xFF\xFE[\0"));
    model.sourceList.deleteAll();
    QVERIFY(TestSupport::waitUntil([&] { return engine->queue().operationCount() == 0; }));
}

QTEST_GUILESS_MAIN(tst_OutputFormatType)
#include "tst_OutputFormatType.moc"
