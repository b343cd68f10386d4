#pragma once

#include "session/FlatFileList.h"
#include "session/OutputEngineOperationType.h"
#include "session/OutputTypes.h"

#include <memory>

class OutputEngine;

// One output format: it makes the stage operation that formats a list.
class OutputFormatType
{
public:
    virtual ~OutputFormatType() = default;
    virtual std::shared_ptr<OutputOperationType> getOutputOperation(
        const DataModelSnapshot &dataModelSnapshot, std::shared_ptr<OutputEngine> outputEngine,
        FlatFileListPtr flatFileList)
        = 0;
};
