#pragma once

#include "platform/ClipboardWriter.h"
#include "session/FlatFileList.h"
#include "session/OutputEngineOperationType.h"
#include "session/OutputTypes.h"

#include <QString>
#include <QStringList>

#include <memory>

class OutputEngine;

// The text encodings a saved list can have, chosen by encodingMode.
enum class TextEncoding { UTF8, UTF16, ISOLatin1 };

// How a format hands its text to the user: as a file, or on the clipboard for another program.
enum class CommitKind { SaveToFile, CopyToClipboard };

// The outcome of saving or copying the list. A successful save may still carry a message, for
// characters that the chosen encoding could not hold.
struct CommitResult
{
    bool success = false;
    QString message;
    // Where the text went, with the file type added when the name had none of the allowed ones.
    QString filePath;
};

// One output format: it makes the stage operation that formats a list, and it knows how the
// finished text leaves the program.
class OutputFormatType
{
public:
    virtual ~OutputFormatType() = default;

    virtual std::shared_ptr<OutputOperationType> getOutputOperation(
        const DataModelSnapshot &dataModelSnapshot, std::shared_ptr<OutputEngine> outputEngine,
        FlatFileListPtr flatFileList)
        = 0;

    // File name extensions without the dot; the first is the one added to a bare name.
    virtual QStringList allowedFileTypes() const { return {}; }
    virtual CommitKind commitKind() const { return CommitKind::SaveToFile; }
    // "Save…" or "Copy", by the commit kind.
    virtual QString actionButtonTitle() const;
    // Saves outputString to filePath in the encoding of the snapshot, replacing any earlier
    // file only once the new one is complete; or, for a copying format, puts it on the
    // clipboard, where filePath and the encoding play no part.
    virtual CommitResult performCommitAction(const QString &outputString,
                                             const DataModelSnapshot &dataModelSnapshot,
                                             const QString &filePath);
    virtual TextEncoding fileEncoding(const DataModelSnapshot &dataModelSnapshot) const;
    virtual QString displayStringFor(const QString &textOutput) const { return textOutput; }

protected:
    // What a copying format puts on the clipboard: the text as plain text only.
    virtual ClipboardContent clipboardContent(const QString &outputString) const;
};

// A format whose runs are operations of one class.
template<typename Operation>
class OutputFormatOf : public OutputFormatType
{
public:
    std::shared_ptr<OutputOperationType> getOutputOperation(
        const DataModelSnapshot &dataModelSnapshot, std::shared_ptr<OutputEngine> outputEngine,
        FlatFileListPtr flatFileList) override
    {
        return std::make_shared<Operation>(dataModelSnapshot, std::move(outputEngine),
                                           std::move(flatFileList));
    }
};
