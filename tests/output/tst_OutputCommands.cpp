#include "Fixtures.h"
#include "RecordingDoubles.h"
#include "TestSupport.h"
#include "output/OutputCommands.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using Availability = OutputCommands::Availability;

class tst_OutputCommands : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void mapFormatHasNoText();
    void textIsOfferedOnlyWhenReadyAndOfTheChosenFormat();
    void copyingFormatsCopyTheirFormAndSaveToo();

private:
    // As the output settings do while they show the state.
    bool waitUntilReady() const
    {
        return TestSupport::waitUntil([&] {
            m_commands->requestTextIfStale();
            return m_commands->availability() == Availability::ready;
        });
    }

    QTemporaryDir m_dir;
    std::unique_ptr<DataModel> m_model;
    std::shared_ptr<OutputEngine> m_engine;
    std::unique_ptr<OutputCommands> m_commands;
    RecordingClipboard m_clipboard;
};

void tst_OutputCommands::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    ClipboardWriter::install(&m_clipboard);
    QVERIFY(!Fixtures::makeJpeg(m_dir.path(), u"a.jpg"_s).isEmpty());
    QVERIFY(!Fixtures::makeJpeg(m_dir.path(), u"b.jpg"_s).isEmpty());
    m_model = std::make_unique<DataModel>();
    m_engine = OutputEngine::create(m_model.get());
    m_commands = std::make_unique<OutputCommands>(m_engine, *m_model);
    m_model->sourceList.add({m_dir.path()}, false);
    m_engine->startListening();
}

void tst_OutputCommands::cleanupTestCase()
{
    m_commands.reset();
    m_engine.reset();
    m_model->sourceList.deleteAll();
    ClipboardWriter::install(nullptr);
}

void tst_OutputCommands::mapFormatHasNoText()
{
    m_model->outputFormat->setValue(OutputFormatIndexEnum::CSV);
    QCOMPARE(m_commands->availability(), Availability::noText);
    const CommitResult copied = m_commands->copyOutput();
    QVERIFY(!copied.success);
    QVERIFY(copied.message.contains(u"map"_s));
    QVERIFY(!m_commands->saveOutput(m_dir.filePath(u"map"_s)).success);
    QVERIFY(m_clipboard.texts.isEmpty());
    QVERIFY(!QFile::exists(m_dir.filePath(u"map.csv"_s)));
}

void tst_OutputCommands::textIsOfferedOnlyWhenReadyAndOfTheChosenFormat()
{
    // Chosen while the first scan may still run, which then makes the map format's result.
    m_model->outputFormat->setValue(OutputFormatIndexEnum::TSV);
    QVERIFY(waitUntilReady());
    QCOMPARE(m_commands->availabilityDescription(), u"The text of 2 items is ready."_s);
    QCOMPARE(m_commands->proposedFileName(), u"File List.tsv"_s);
    QVERIFY(m_commands->copyOutput().success);
    QVERIFY(m_clipboard.texts.last().startsWith(u"\"a.jpg\"\t"_s));

    const CommitResult saved = m_commands->saveOutput(m_dir.filePath(u"list"_s));
    QVERIFY2(saved.success, qPrintable(saved.message));
    QCOMPARE(saved.filePath, m_dir.filePath(u"list.tsv"_s));
    QFile file(saved.filePath);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(file.readAll()), m_clipboard.texts.last());

    // Right after a change of format the current text is still the old format's: it is never
    // handed out, so a copy either waits for the new text or gets it.
    m_model->outputFormat->setValue(OutputFormatIndexEnum::JSON);
    const qsizetype copies = m_clipboard.texts.size();
    const CommitResult early = m_commands->copyOutput();
    if (early.success) {
        QVERIFY(m_clipboard.texts.last().startsWith(u"["_s));
    } else {
        QCOMPARE(early.message, u"The text is being computed…"_s);
        QCOMPARE(m_clipboard.texts.size(), copies);
    }
    QVERIFY(waitUntilReady());
    QVERIFY(m_commands->copyOutput().success);
    QVERIFY(m_clipboard.texts.last().startsWith(u"["_s));
}

void tst_OutputCommands::copyingFormatsCopyTheirFormAndSaveToo()
{
    m_model->outputFormat->setValue(OutputFormatIndexEnum::CopyToHTML);
    QVERIFY(waitUntilReady());
    QVERIFY(m_commands->copyOutput().success);
    QVERIFY(m_clipboard.written.last().html.has_value());
    QVERIFY(m_clipboard.written.last().html->contains(u"<table>"_s));
    const CommitResult saved = m_commands->saveOutput(m_dir.filePath(u"page"_s));
    QVERIFY(saved.success);
    QCOMPARE(saved.filePath, m_dir.filePath(u"page.html"_s));
}

QTEST_GUILESS_MAIN(tst_OutputCommands)
#include "tst_OutputCommands.moc"
