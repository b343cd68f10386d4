#pragma once

#include "CopyToHTMLEditorOutputOperation.h"
#include "OutputFormatType.h"

// The HTML page on the clipboard, for an HTML editor.
class CopyToHTMLEditorOutputFormat : public OutputFormatOf<CopyToHTMLEditorOutputOperation>
{
public:
    QStringList allowedFileTypes() const override
    {
        return {QStringLiteral("html"), QStringLiteral("htm")};
    }
    CommitKind commitKind() const override { return CommitKind::CopyToClipboard; }

protected:
    // As HTML and as plain text holding the same markup, so that both a rich editor and a
    // source editor get the page.
    ClipboardContent clipboardContent(const QString &outputString) const override
    {
        return {outputString, outputString};
    }
};
