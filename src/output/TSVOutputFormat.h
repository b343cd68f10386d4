#pragma once

#include "OutputFormatType.h"
#include "TSVOutputOperation.h"

// Tab-separated text, saved to a file.
class TSVOutputFormat : public OutputFormatOf<TSVOutputOperation>
{
public:
    QStringList allowedFileTypes() const override
    {
        return {QStringLiteral("tsv"), QStringLiteral("txt")};
    }
};
