#include "OutputFormatType.h"

#include "OutputFileWriter.h"

QString OutputFormatType::actionButtonTitle() const
{
    return commitKind() == CommitKind::CopyToClipboard ? QStringLiteral("Copy")
                                                       : QStringLiteral("Save…");
}

ClipboardContent OutputFormatType::clipboardContent(const QString &outputString) const
{
    return {outputString, std::nullopt};
}

CommitResult OutputFormatType::performCommitAction(const QString &outputString,
                                                   const DataModelSnapshot &dataModelSnapshot,
                                                   const QString &filePath)
{
    if (commitKind() == CommitKind::CopyToClipboard) {
        CommitResult result;
        result.success = ClipboardWriter::put(clipboardContent(outputString));
        if (!result.success)
            result.message = QStringLiteral("Could not put the list on the clipboard.");
        return result;
    }
    return OutputFileWriter::save(
        outputString, fileEncoding(dataModelSnapshot),
        OutputFileWriter::withAllowedFileType(filePath, allowedFileTypes()));
}

TextEncoding OutputFormatType::fileEncoding(const DataModelSnapshot &dataModelSnapshot) const
{
    return OutputFileWriter::encodingForMode(dataModelSnapshot.encodingMode);
}
