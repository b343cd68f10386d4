#include "OutputEngine.h"

#include "DataModel.h"
#include "StageOperations.h"
#include "bricks/KVOResponder.h"
#include "metadata/MetadataStorage.h"
#include "output/CSVOutputFormat.h"
#include "output/CopyToExcelFormat.h"
#include "output/CopyToHTMLEditorOutputFormat.h"
#include "output/GPXOutputFormat.h"
#include "output/HTMLOutputFormat.h"
#include "output/JSONOutputFormat.h"
#include "output/KMLOutputFormat.h"
#include "output/TSVOutputFormat.h"
#include "platform/MainQueue.h"

std::shared_ptr<OutputEngine> OutputEngine::create(DataModel *dataModel)
{
    return std::shared_ptr<OutputEngine>(new OutputEngine(dataModel));
}

OutputEngine::OutputEngine(DataModel *dataModel)
    : outputCompletePublisher(std::make_shared<StraightVariable<bool>>(false))
    , m_dataModel(dataModel)
    , serialQueue(QStringLiteral("outputEngineSerialQueue"))
    , operationQueue(QStringLiteral("mainOperationQueue"), 1, QualityOfService::UserInteractive)
{
    outputFormats.insert(int(OutputFormatIndexEnum::CSV), std::make_shared<CSVOutputFormat>());
    outputFormats.insert(int(OutputFormatIndexEnum::TSV), std::make_shared<TSVOutputFormat>());
    outputFormats.insert(int(OutputFormatIndexEnum::JSON), std::make_shared<JSONOutputFormat>());
    outputFormats.insert(int(OutputFormatIndexEnum::HTML), std::make_shared<HTMLOutputFormat>());
    outputFormats.insert(int(OutputFormatIndexEnum::CopyToHTML),
                         std::make_shared<CopyToHTMLEditorOutputFormat>());
    outputFormats.insert(int(OutputFormatIndexEnum::CopyToExcel),
                         std::make_shared<CopyToExcelFormat>());
    outputFormats.insert(int(OutputFormatIndexEnum::KML), std::make_shared<KMLOutputFormat>());
    outputFormats.insert(int(OutputFormatIndexEnum::GPX), std::make_shared<GPXOutputFormat>());
    outputCompletePublisher->addColdListener([](bool) {});
}

OutputEngine::~OutputEngine()
{
    operationQueue.cancelAllOperations();
}

void OutputEngine::setOutputFormat(OutputFormatIndexEnum index,
                                   std::shared_ptr<OutputFormatType> format)
{
    outputFormats.insert(int(index), std::move(format));
}

OutputFormatType *OutputEngine::outputFormatObject(OutputFormatIndexEnum index) const
{
    return outputFormats.value(int(index)).get();
}

void OutputEngine::addPreviewTable(std::weak_ptr<PreviewTableUpdating> table)
{
    previewTables.push_back(std::move(table));
}

FlatFileListPtr OutputEngine::flatFileList() const
{
    std::lock_guard lock(flatFileListMutex);
    return m_flatFileList;
}

void OutputEngine::setFlatFileList(FlatFileListPtr list)
{
    std::lock_guard lock(flatFileListMutex);
    m_flatFileList = std::move(list);
}

std::optional<QString> OutputEngine::currentOutputString() const
{
    std::optional<QString> result;
    serialQueue.sync([&] { result = m_currentOutputString; });
    return result;
}

std::optional<OutputEngine::OutputText> OutputEngine::currentOutput() const
{
    std::optional<OutputText> result;
    serialQueue.sync([&] {
        if (m_currentOutputString && m_currentOutputStringFormat)
            result = OutputText {*m_currentOutputString, *m_currentOutputStringFormat};
    });
    return result;
}

std::optional<int> OutputEngine::currentFileCount() const
{
    std::optional<int> result;
    serialQueue.sync([&] { result = m_currentFileCount; });
    return result;
}

void OutputEngine::startListening()
{
    if (!m_dataModel)
        qFatal("OutputEngine::startListening needs the application's data model");
    DataModel &model = *m_dataModel;
    std::weak_ptr<OutputEngine> weakSelf = weak_from_this();
    const auto withSelf = [weakSelf](auto action) {
        return [weakSelf, action](const auto &...) {
            if (auto self = weakSelf.lock())
                action(*self);
        };
    };
    const auto reformat = [](OutputEngine &self) {
        if (FlatFileListPtr list = self.flatFileList())
            self.launchOutputOperation(self.m_dataModel->createSnapshot(), list);
    };
    UserDefaults &defaults = UserDefaults::standard();

    kvoResponders.push_back(std::make_unique<KVOResponder>(
        model.sourceList.storageKey, defaults, false,
        withSelf([](OutputEngine &self) { self.launchScanOperation(); })));
    kvoResponders.push_back(std::make_unique<KVOResponder>(
        model.columnList.storageKey, defaults, false, withSelf([reformat](OutputEngine &self) {
            reformat(self);
            self.updatePreviewTable();
        })));
    model._stepperMode->addColdListener([weakSelf](const StepperMode &mode) {
        auto self = weakSelf.lock();
        if (!self)
            return;
        static const QHash<int, SortMode> stepperSort = {
            {int(StepperMode::inactive), SortMode::nameAndSequenceAscending},
            {int(StepperMode::sublocation), SortMode::subLocationAscending},
            {int(StepperMode::province), SortMode::provinceAscending},
            {int(StepperMode::country), SortMode::countryAscending},
            {int(StepperMode::city), SortMode::cityAscending},
        };
        self->m_dataModel->setFirstSortMode(stepperSort.value(int(mode)));
    });
    const auto rescan = withSelf([](OutputEngine &self) { self.launchScanOperation(); });
    model.processFiles->addColdListener(rescan);
    model.processFolders->addColdListener(rescan);
    model.processSubFolders->addColdListener(rescan);
    kvoResponders.push_back(std::make_unique<KVOResponder>(model.outputFormat->key(), defaults,
                                                           false, withSelf(reformat)));
    const auto resort = withSelf([](OutputEngine &self) { self.launchReSortOperation(); });
    model._firstSortMode->addColdListener(resort);
    model._secondSortMode->addColdListener(resort);
    // encodingMode is left out on purpose: it changes no text.
    model.quoteStrings->addColdListener(withSelf(reformat));
    for (const auto &setting :
         {model.includeColumnTitlesMode, model.boolValuesMode, model.nullValuesMode,
          model.dateFormatMode, model.multiLineMode, model.linebreaksMode,
          model.htmlIndentationMode, model.htmlColumnIdHeaderMode, model.htmlColumnClassMode,
          model.jsonIndentationMode, model.jsonDateFormatMode})
        setting->addColdListener(withSelf(reformat));

    launchScanOperation();
}

void OutputEngine::launchScanOperation()
{
    if (!m_dataModel)
        return;
    auto operation
        = std::make_shared<ScannerOperation>(shared_from_this(), m_dataModel->createSnapshot());
    operationQueue.cancelAllOperations();
    operationQueue.addOperation(operation);
}

void OutputEngine::launchReSortOperation()
{
    if (!m_dataModel)
        return;
    FlatFileListPtr list = flatFileList();
    if (!list)
        return;
    operationQueue.addOperation(std::make_shared<ReSortFlatFileListOperation>(
        shared_from_this(), list, m_dataModel->createSnapshot()));
}

void OutputEngine::launchOutputOperation(const DataModelSnapshot &snapshot, FlatFileListPtr list)
{
    const auto format = outputFormats.constFind(int(snapshot.outputFormat));
    if (format == outputFormats.cend() || !*format)
        return;
    if (auto operation
        = (*format)->getOutputOperation(snapshot, shared_from_this(), std::move(list)))
        operationQueue.addOperation(operation);
}

void OutputEngine::chain(FlatFileListPtr list, const DataModelSnapshot &snapshot, bool fromScan)
{
    if (!list)
        return;
    auto self = shared_from_this();
    serialQueue.async([self, list, snapshot, fromScan] {
        self->setFlatFileList(list);
        if (fromScan)
            self->m_currentFileCount = int(list->files.size());
        // The snapshot the stage carried, not a fresh one: a later change queues its own stage.
        self->launchOutputOperation(snapshot, list);
        self->updatePreviewTable();
    });
}

void OutputEngine::scanOperationFinished(ScannerOperation &operation)
{
    chain(operation.flatFileList, operation.dataModelSnapshot, true);
}

void OutputEngine::reSortOperationFinished(ReSortFlatFileListOperation &operation)
{
    chain(operation.resortedFlatFileList, operation.dataModelSnapshot, false);
}

void OutputEngine::outputOperationFinished(OutputOperationType &operation)
{
    serialQueue.sync([&] {
        m_currentOutputString = operation.outputString();
        m_currentOutputStringFormat = operation.outputFormat();
        m_currentFileCount = operation.totalFileCount();
    });
    // Never reset: each completion is a fresh notification with the same value.
    outputCompletePublisher->setValue(true);
}

void OutputEngine::updatePreviewTable()
{
    std::weak_ptr<OutputEngine> weakSelf = weak_from_this();
    MainQueue::post([weakSelf] {
        auto self = weakSelf.lock();
        if (!self)
            return;
        const FlatFileListPtr list = self->flatFileList();
        for (const auto &weakTable : self->previewTables) {
            if (auto table = weakTable.lock()) {
                if (list)
                    table->setNodes(list->files);
                table->updateAll();
            }
        }
    });
}

OutputFormatType *OutputEngine::currentOutputFormat() const
{
    if (!m_dataModel)
        return nullptr;
    return outputFormats.value(int(m_dataModel->outputFormat->value())).get();
}

CommitResult OutputEngine::performCommitAction(const QString &filePath)
{
    std::optional<QString> text;
    std::optional<OutputFormatIndexEnum> textFormat;
    serialQueue.sync([&] {
        text = m_currentOutputString;
        textFormat = m_currentOutputStringFormat;
    });
    CommitResult result;
    result.filePath = filePath;
    if (!text) {
        result.message = QStringLiteral("The list has not been computed yet.");
        return result;
    }
    // The format that made the text, which a format change may not have replaced yet.
    OutputFormatType *format = textFormat ? outputFormatObject(*textFormat) : currentOutputFormat();
    if (!format) {
        result.message = QStringLiteral("There is no output format to save the list with.");
        return result;
    }
    // A fresh snapshot: encodingMode changes no text, so the last run may predate it.
    const DataModelSnapshot snapshot
        = m_dataModel ? m_dataModel->createSnapshot() : DataModelSnapshot();
    return format->performCommitAction(*text, snapshot, filePath);
}

OutputEngineViewModel OutputEngine::createOutputEngineViewModel()
{
    OutputEngineViewModel model;
    serialQueue.sync([&] {
        model.currentNumberOfMetadataItems = int(MetadataStorage::shared().itemCounter());
        model.currentNumberOfItems = m_currentFileCount.value_or(0);
        const QList<OperationPtr> operations = operationQueue.operations();
        const auto *stage = operations.isEmpty()
            ? nullptr
            : dynamic_cast<const OutputEngineOperationType *>(operations.first().get());
        if (stage) {
            model.activeStage = stage->type();
            model.currentItemProcessing = stage->currentFileCount();
            model.totalItemProcessing = stage->totalFileCount();
            model.indeterminateProgress = stage->indeterminateProgress();
        }
    });
    return model;
}
