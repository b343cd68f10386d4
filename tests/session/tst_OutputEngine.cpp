#include "output/OutputFormatType.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"
#include "session/StatusLine.h"

#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <future>

using namespace Qt::StringLiterals;

namespace {

// A minimal text format: the names of the list, one a line, in the list's order.
class NamesOperation : public OutputOperationType
{
public:
    NamesOperation(std::shared_ptr<OutputEngine> engine, FlatFileListPtr list)
        : engine(std::move(engine))
        , list(std::move(list))
    { }
    void main() override
    {
        if (isCancelled())
            return;
        QStringList names;
        for (const NodePtr &node : list->files) {
            names << node->name;
            ++done;
        }
        text = names.join(QLatin1Char('\n'));
        if (!isCancelled())
            engine->outputOperationFinished(*this);
    }
    int currentFileCount() const override { return done; }
    int totalFileCount() const override { return int(list->files.size()); }
    bool indeterminateProgress() const override { return false; }
    QString outputString() const override { return text; }

    std::shared_ptr<OutputEngine> engine;
    FlatFileListPtr list;
    std::atomic_int done = 0;
    QString text;
};

class NamesFormat : public OutputFormatType
{
public:
    std::shared_ptr<OutputOperationType> getOutputOperation(const DataModelSnapshot &,
                                                            std::shared_ptr<OutputEngine> engine,
                                                            FlatFileListPtr list) override
    {
        ++operationsMade;
        return std::make_shared<NamesOperation>(std::move(engine), std::move(list));
    }
    std::atomic_int operationsMade = 0;
};

// Puts an operation on the engine's queue that blocks it until the returned promise is kept.
std::promise<void> holdQueue(OutputEngine &engine)
{
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::promise<void> started;
    engine.queue().addOperation([released, &started] {
        started.set_value();
        released.wait();
    });
    started.get_future().wait();
    return release;
}

class RecordingTable : public PreviewTableUpdating
{
public:
    void setNodes(const QList<NodePtr> &nodes) override
    {
        shown = nodes;
        history.append(nodes);
    }
    void updateAll() override { ++updates; }
    QList<NodePtr> shown;
    // Every list the table was given, in order.
    QList<QList<NodePtr>> history;
    int updates = 0;
};

void touch(const QString &path)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
}

} // namespace

class tst_OutputEngine : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void emptySourceListGivesEmptyListThenReady();
    void scanSortAndFormatChainAndPublish();
    void secondSourceChangeCancelsTheFirst();
    void settingsBeforeFirstScanStartNothing();
    void stepperAndSortChangesResortWithoutRescanning();
    void scanSettingChangedFromOutsideRescans();
    void statusLineTexts_data();
    void statusLineTexts();

private:
    bool waitReady();
    // Starts the engine on one of the folders and waits for its list of count files.
    bool scan(const char *folder, qsizetype count);
    QStringList listedNames() const;

    QTemporaryDir m_dir;
    std::unique_ptr<DataModel> m_model;
    std::shared_ptr<OutputEngine> m_engine;
    std::shared_ptr<NamesFormat> m_format;
    std::shared_ptr<RecordingTable> m_table;
};

void tst_OutputEngine::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    for (const char *name : {"b10.jpg", "b9.jpg", "a.jpg"})
        touch(m_dir.filePath(u"one/"_s + QLatin1String(name)));
    touch(m_dir.filePath(u"two/c.jpg"_s));
}

void tst_OutputEngine::init()
{
    UserDefaults::standard().setObject(QStringList(), u"brisk_sources"_s);
    UserDefaults::standard().setObject(1, u"outputFormat"_s);
    m_model = std::make_unique<DataModel>();
    m_engine = OutputEngine::create(m_model.get());
    m_format = std::make_shared<NamesFormat>();
    m_engine->setOutputFormat(OutputFormatIndexEnum::TSV, m_format);
    m_table = std::make_shared<RecordingTable>();
    m_engine->addPreviewTable(m_table);
}

void tst_OutputEngine::cleanup()
{
    waitReady();
    m_engine.reset();
    m_model.reset();
}

bool tst_OutputEngine::waitReady()
{
    return TestSupport::waitUntil(
        [&] { return !m_engine || m_engine->queue().operationCount() == 0; });
}

bool tst_OutputEngine::scan(const char *folder, qsizetype count)
{
    m_engine->startListening();
    m_model->sourceList.add({m_dir.filePath(QLatin1String(folder))}, false);
    return TestSupport::waitUntil([&] { return listedNames().size() == count; }) && waitReady();
}

QStringList tst_OutputEngine::listedNames() const
{
    QStringList names;
    if (FlatFileListPtr list = m_engine->flatFileList())
        for (const NodePtr &node : list->files)
            names << node->name;
    return names;
}

void tst_OutputEngine::emptySourceListGivesEmptyListThenReady()
{
    m_engine->startListening();
    QVERIFY(TestSupport::waitUntil([&] { return m_engine->currentOutputString().has_value(); }));
    QVERIFY(waitReady());
    QVERIFY(m_engine->flatFileList());
    QVERIFY(m_engine->flatFileList()->files.isEmpty());
    QCOMPARE(m_engine->currentOutputString(), std::optional<QString>(QString()));
    QCOMPARE(m_engine->currentFileCount(), std::optional<int>(0));
    const OutputEngineViewModel status = m_engine->createOutputEngineViewModel();
    QCOMPARE(status.activeStage, OutputOperationTypeEnum::ready);
    QCOMPARE(status.currentNumberOfItems, 0);
}

void tst_OutputEngine::scanSortAndFormatChainAndPublish()
{
    std::atomic_int completions = 0;
    m_engine->outputCompletePublisher->addColdListener([&](bool v) { completions += v ? 1 : 0; });
    m_engine->startListening();
    m_model->sourceList.add({m_dir.filePath(u"one"_s)}, false);
    QVERIFY(TestSupport::waitUntil([&] { return listedNames().size() == 3 && completions >= 1; }));
    QVERIFY(waitReady());
    QCOMPARE(listedNames(), (QStringList {u"a.jpg"_s, u"b9.jpg"_s, u"b10.jpg"_s}));
    QCOMPARE(m_engine->currentOutputString(), std::optional<QString>(u"a.jpg\nb9.jpg\nb10.jpg"_s));
    QVERIFY(TestSupport::waitUntil([&] { return m_table->shown.size() == 3; }));
    QVERIFY(m_table->updates >= 1);
    QVERIFY(m_model->waitingForData->value());
}

void tst_OutputEngine::secondSourceChangeCancelsTheFirst()
{
    m_engine->startListening();
    QVERIFY(waitReady());
    // The queue is held while the sources change twice, so the first scan is still waiting
    // when the second change comes: it must be cancelled and never reach the table.
    std::promise<void> release = holdQueue(*m_engine);
    m_model->sourceList.add({m_dir.filePath(u"one"_s)}, false);
    m_model->sourceList.deleteAt(0);
    m_model->sourceList.add({m_dir.filePath(u"two"_s)}, false);
    release.set_value();
    QVERIFY(TestSupport::waitUntil([&] { return listedNames() == QStringList {u"c.jpg"_s}; }));
    QVERIFY(waitReady());
    for (const QList<NodePtr> &shown : std::as_const(m_table->history)) {
        for (const NodePtr &node : shown)
            QVERIFY2(node->name == u"c.jpg"_s, qPrintable(node->name));
    }
    QCOMPARE(listedNames(), QStringList {u"c.jpg"_s});
    QCOMPARE(m_engine->currentOutputString(), std::optional<QString>(u"c.jpg"_s));
}

void tst_OutputEngine::settingsBeforeFirstScanStartNothing()
{
    // The first scan waits behind a held queue: until it has finished there is no list, so sort,
    // stepper and output changes start no stage, and the scan's own settings give the result.
    m_model->sourceList.add({m_dir.filePath(u"one"_s)}, false);
    std::promise<void> release = holdQueue(*m_engine);
    m_engine->startListening();
    const int queued = m_engine->queue().operationCount();
    m_engine->launchReSortOperation();
    m_model->setFirstSortMode(SortMode::nameDescending);
    m_model->setStepperMode(StepperMode::city);
    m_model->outputFormat->setValue(OutputFormatIndexEnum::JSON);
    m_model->quoteStrings->setValue(!m_model->quoteStrings->value());
    QCOMPARE(m_engine->queue().operationCount(), queued);
    QVERIFY(!m_engine->flatFileList());
    release.set_value();
    QVERIFY(TestSupport::waitUntil([&] { return m_engine->currentOutputString().has_value(); }));
    QVERIFY(waitReady());
    QCOMPARE(listedNames(), (QStringList {u"a.jpg"_s, u"b9.jpg"_s, u"b10.jpg"_s}));
    QCOMPARE(m_format->operationsMade.load(), 1);
}

void tst_OutputEngine::stepperAndSortChangesResortWithoutRescanning()
{
    QVERIFY(scan("one", 3));
    const FlatFileListPtr first = m_engine->flatFileList();

    m_model->setFirstSortMode(SortMode::nameAndSequenceDescending);
    QVERIFY(TestSupport::waitUntil([&] { return m_engine->flatFileList() != first; }));
    QVERIFY(waitReady());
    QCOMPARE(listedNames(), (QStringList {u"b10.jpg"_s, u"b9.jpg"_s, u"a.jpg"_s}));
    // The same nodes, and the old list untouched for whoever still reads it.
    QCOMPARE(m_engine->flatFileList()->files.last(), first->files.first());
    QCOMPARE(first->files.first()->name, u"a.jpg"_s);
    QCOMPARE(m_engine->currentOutputString(), std::optional<QString>(u"b10.jpg\nb9.jpg\na.jpg"_s));

    // Stepper inactive puts the natural name order back, whatever was chosen.
    m_model->setStepperMode(StepperMode::inactive);
    QCOMPARE(m_model->firstSortMode(), SortMode::nameAndSequenceAscending);
    QVERIFY(TestSupport::waitUntil([&] { return listedNames().first() == u"a.jpg"_s; }));
    QVERIFY(waitReady());
}

void tst_OutputEngine::scanSettingChangedFromOutsideRescans()
{
    QVERIFY(scan("two", 1));
    const FlatFileListPtr list = m_engine->flatFileList();
    UserDefaults::standard().setObject(true, u"prodcessSubfolders"_s);
    QVERIFY(TestSupport::waitUntil([&] { return m_engine->flatFileList() != list; }));
    // A rescan makes new nodes for the same files.
    QVERIFY(m_engine->flatFileList()->files.first() != list->files.first());
    QCOMPARE(m_engine->flatFileList()->files.first()->absolutePath,
             list->files.first()->absolutePath);
}

void tst_OutputEngine::statusLineTexts_data()
{
    QTest::addColumn<int>("stage");
    QTest::addColumn<bool>("indeterminate");
    QTest::addColumn<bool>("writing");
    QTest::addColumn<int>("secondsSinceReference");
    QTest::addColumn<QString>("expected");
    const QString tail = u" (40 items | 2 selected | 7 metadata items). "_s;
    QTest::newRow("scanning") << int(OutputOperationTypeEnum::scanning) << false << false << 0
                              << u"12 items scanned..."_s + tail;
    QTest::newRow("sorting, second 0") << int(OutputOperationTypeEnum::scanning) << true << false
                                       << 0 << u"Sorting items."_s + tail;
    QTest::newRow("resorting, second 3") << int(OutputOperationTypeEnum::resorting) << false
                                         << false << 7 << u"Sorting items...."_s + tail;
    QTest::newRow("computing") << int(OutputOperationTypeEnum::computingOutput) << false << false
                               << 0 << u"Computing output (12/30)..."_s + tail;
    QTest::newRow("writing") << int(OutputOperationTypeEnum::ready) << false << true << 0
                             << u"Writing 5 of 9..."_s + tail;
    QTest::newRow("ready") << int(OutputOperationTypeEnum::ready) << false << false << 0
                           << u"Ready."_s + tail;
}

void tst_OutputEngine::statusLineTexts()
{
    QFETCH(int, stage);
    QFETCH(bool, indeterminate);
    QFETCH(bool, writing);
    QFETCH(int, secondsSinceReference);
    OutputEngineViewModel engine;
    engine.activeStage = OutputOperationTypeEnum(stage);
    engine.indeterminateProgress = indeterminate;
    engine.currentItemProcessing = 12;
    engine.totalItemProcessing = 40; // larger than the count: the status never shows less
    engine.currentNumberOfItems = 30;
    engine.currentNumberOfMetadataItems = 7;
    WriteEngineViewModel writer;
    writer.isActive = writing;
    writer.currentFileIndex = 4;
    writer.totalFileCount = 9;
    const QDateTime now
        = QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC).addSecs(secondsSinceReference);
    QTEST(StatusLine::text(engine, writer, 2, now), "expected");
}

QTEST_GUILESS_MAIN(tst_OutputEngine)
#include "tst_OutputEngine.moc"
