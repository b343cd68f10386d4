#pragma once

#include <QString>

// The general clipboard. The application installs one on QClipboard; tests install one that
// records the text. Without one, the text is written to the log.
class ClipboardWriter
{
public:
    virtual ~ClipboardWriter() = default;
    // Replaces the clipboard's contents with the plain text.
    virtual void writeText(const QString &text) = 0;

    static void setText(const QString &text);
    static void install(ClipboardWriter *writer);
};
