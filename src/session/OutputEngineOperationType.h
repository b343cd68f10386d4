#pragma once

#include "OutputTypes.h"
#include "platform/Operation.h"

// Every stage of the pipeline reports its progress through this.
class OutputEngineOperationType : public Operation
{
public:
    virtual int currentFileCount() const = 0;
    virtual int totalFileCount() const = 0;
    virtual OutputOperationTypeEnum type() const = 0;
    virtual bool indeterminateProgress() const = 0;
};

// The output stages (one per text format) also hand over their text.
class OutputOperationType : public OutputEngineOperationType
{
public:
    OutputOperationTypeEnum type() const override
    {
        return OutputOperationTypeEnum::computingOutput;
    }
    virtual QString outputString() const = 0;
};
