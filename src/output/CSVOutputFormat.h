#pragma once

#include "CSVOutputOperation.h"
#include "OutputFormatType.h"

// The default: the items go onto the map, and there is no text to save.
class CSVOutputFormat : public OutputFormatOf<CSVOutputOperation>
{
public:
    QStringList allowedFileTypes() const override { return {QStringLiteral("csv")}; }
    QString actionButtonTitle() const override { return QString(); }
    CommitResult performCommitAction(const QString &, const DataModelSnapshot &,
                                     const QString &filePath) override
    {
        return {false,
                QStringLiteral("The map format makes no text to save. Choose a text format."),
                filePath};
    }
};
