#pragma once

#include "FlatFileList.h"
#include "OutputEngineOperationType.h"
#include "OutputTypes.h"
#include "PreviewTableUpdating.h"
#include "bricks/Variables.h"
#include "platform/OperationQueue.h"
#include "platform/SerialQueue.h"

#include <QHash>

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

class DataModel;
class KVOResponder;
struct CommitResult;
class OutputFormatType;
class ScannerOperation;
class ReSortFlatFileListOperation;

// Turns the session's settings into results: scans the sources into a sorted list, re-sorts it
// when only the order changed, and formats it in the current output format, one stage at a
// time on a background queue. A cancelled stage publishes nothing.
class OutputEngine : public std::enable_shared_from_this<OutputEngine>
{
public:
    static std::shared_ptr<OutputEngine> create(DataModel *dataModel);
    ~OutputEngine();

    // Registers the observers of the settings and launches the first scan. Main thread.
    void startListening();

    void launchScanOperation();
    void launchReSortOperation();
    void launchOutputOperation(const DataModelSnapshot &snapshot, FlatFileListPtr flatFileList);

    // Called by a stage on its worker thread as its last act, unless it was cancelled.
    void scanOperationFinished(ScannerOperation &operation);
    void reSortOperationFinished(ReSortFlatFileListOperation &operation);
    void outputOperationFinished(OutputOperationType &operation);

    void updatePreviewTable();
    OutputFormatType *currentOutputFormat() const;
    OutputEngineViewModel createOutputEngineViewModel();

    // The last finished list; absent before the first scan has finished.
    FlatFileListPtr flatFileList() const;
    std::optional<QString> currentOutputString() const;
    // The last finished text together with the format that made it; absent before the first.
    struct OutputText
    {
        QString text;
        OutputFormatIndexEnum format;
    };
    std::optional<OutputText> currentOutput() const;
    std::optional<int> currentFileCount() const;

    // Saves or copies the current text through the format that made it, in the encoding set
    // now; filePath is where a saving format writes. Main thread.
    CommitResult performCommitAction(const QString &filePath = QString());

    void addPreviewTable(std::weak_ptr<PreviewTableUpdating> table);
    // Replaces one of the built-in formats; for tests.
    void setOutputFormat(OutputFormatIndexEnum index, std::shared_ptr<OutputFormatType> format);
    OutputFormatType *outputFormatObject(OutputFormatIndexEnum index) const;

    OperationQueue &queue() { return operationQueue; }
    DataModel *dataModel() const { return m_dataModel; }

    // Set true at each finished output stage, on that stage's thread.
    std::shared_ptr<StraightVariable<bool>> outputCompletePublisher;

private:
    explicit OutputEngine(DataModel *dataModel);
    void setFlatFileList(FlatFileListPtr list);
    void chain(FlatFileListPtr list, const DataModelSnapshot &snapshot, bool fromScan);

    DataModel *m_dataModel;
    std::vector<std::unique_ptr<KVOResponder>> kvoResponders;
    mutable SerialQueue serialQueue;
    OperationQueue operationQueue;
    QHash<int, std::shared_ptr<OutputFormatType>> outputFormats;
    std::vector<std::weak_ptr<PreviewTableUpdating>> previewTables; // main thread only

    // The list pointer is read by main-thread listeners directly; the mutex makes that one
    // pointer-sized read safe. Written on serialQueue.
    mutable std::mutex flatFileListMutex;
    FlatFileListPtr m_flatFileList;
    // Owned by serialQueue: the three results below.
    std::optional<QString> m_currentOutputString;
    std::optional<OutputFormatIndexEnum> m_currentOutputStringFormat;
    std::optional<int> m_currentFileCount;
};
