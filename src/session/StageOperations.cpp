#include "StageOperations.h"

#include "OutputEngine.h"

ScannerOperation::ScannerOperation(std::shared_ptr<OutputEngine> outputEngine,
                                   DataModelSnapshot dataModelSnapshot)
    : outputEngine(std::move(outputEngine))
    , dataModelSnapshot(std::move(dataModelSnapshot))
{ }

void ScannerOperation::main()
{
    if (isCancelled())
        return;
    if (dataModelSnapshot.sourceList.isEmpty()) {
        flatFileList = std::make_shared<FlatFileList>();
        if (!isCancelled())
            outputEngine->scanOperationFinished(*this);
        return;
    }
    scanner.firstSortMode = dataModelSnapshot.firstSortMode;
    scanner.secondSortMode = dataModelSnapshot.secondSortMode;
    // Cancellation is looked at only before and after: a running scan finishes its work.
    for (const QString &source : dataModelSnapshot.sourceList)
        scanner.scanSource(source);
    flatFileList = std::make_shared<FlatFileList>(scanner.flatFileList);
    if (isCancelled())
        return;
    outputEngine->scanOperationFinished(*this);
}

ReSortFlatFileListOperation::ReSortFlatFileListOperation(std::shared_ptr<OutputEngine> outputEngine,
                                                         FlatFileListPtr flatFileList,
                                                         DataModelSnapshot dataModelSnapshot)
    : outputEngine(std::move(outputEngine))
    , flatFileList(std::move(flatFileList))
    , dataModelSnapshot(std::move(dataModelSnapshot))
    , m_totalFileCount(int(this->flatFileList->files.size()))
{ }

void ReSortFlatFileListOperation::main()
{
    if (isCancelled())
        return;
    // The old list is left as it is, so that its readers stay valid.
    auto sorted = std::make_shared<FlatFileList>(flatFileList->files);
    sorted->sort(dataModelSnapshot.firstSortMode, dataModelSnapshot.secondSortMode);
    resortedFlatFileList = sorted;
    if (!isCancelled())
        outputEngine->reSortOperationFinished(*this);
}
