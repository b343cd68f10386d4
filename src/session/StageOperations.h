#pragma once

#include "FileScanner.h"
#include "OutputEngineOperationType.h"

#include <memory>

class OutputEngine;

// The scan stage: every source in order through one scanner.
class ScannerOperation final : public OutputEngineOperationType
{
public:
    ScannerOperation(std::shared_ptr<OutputEngine> outputEngine,
                     DataModelSnapshot dataModelSnapshot);
    void main() override;

    int currentFileCount() const override { return scanner.currentTotalItemsScanned; }
    int totalFileCount() const override { return scanner.currentTotalItemsScanned; }
    OutputOperationTypeEnum type() const override { return OutputOperationTypeEnum::scanning; }
    bool indeterminateProgress() const override { return scanner.isSorting; }

    const std::shared_ptr<OutputEngine> outputEngine;
    const DataModelSnapshot dataModelSnapshot;
    FileScanner scanner;
    FlatFileListPtr flatFileList;
};

// The re-sort stage: a new list over the same nodes, sorted by the snapshot's modes.
class ReSortFlatFileListOperation final : public OutputEngineOperationType
{
public:
    ReSortFlatFileListOperation(std::shared_ptr<OutputEngine> outputEngine,
                                FlatFileListPtr flatFileList, DataModelSnapshot dataModelSnapshot);
    void main() override;

    int currentFileCount() const override { return 0; }
    int totalFileCount() const override { return m_totalFileCount; }
    OutputOperationTypeEnum type() const override { return OutputOperationTypeEnum::resorting; }
    bool indeterminateProgress() const override { return true; }

    const std::shared_ptr<OutputEngine> outputEngine;
    const FlatFileListPtr flatFileList;
    const DataModelSnapshot dataModelSnapshot;
    FlatFileListPtr resortedFlatFileList;

private:
    const int m_totalFileCount;
};
