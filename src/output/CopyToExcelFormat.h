#pragma once

#include "CopyToExcelOutputOperation.h"
#include "OutputFormatType.h"

// Tab-separated text on the clipboard as plain text, which a spreadsheet splits into cells.
class CopyToExcelFormat : public OutputFormatOf<CopyToExcelOutputOperation>
{
public:
    QStringList allowedFileTypes() const override
    {
        return {QStringLiteral("tsv"), QStringLiteral("txt")};
    }
    CommitKind commitKind() const override { return CommitKind::CopyToClipboard; }
};
