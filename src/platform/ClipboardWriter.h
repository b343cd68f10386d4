#pragma once

#include <QString>

// The general clipboard as the core sees it. The application installs a writer over the
// system clipboard; tests install one that records the text.
class ClipboardWriter
{
public:
    virtual ~ClipboardWriter() = default;
    // Replaces the clipboard's contents with the text.
    virtual void writeText(const QString &text) = 0;

    // Through the installed writer; without one, the text goes to the log.
    static void setText(const QString &text);
    static void install(ClipboardWriter *writer);
};
