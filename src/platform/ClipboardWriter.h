#pragma once

#include <QString>

#include <optional>

// What goes onto the clipboard: always plain text, and an HTML form for programs that take one.
struct ClipboardContent
{
    QString plainText;
    std::optional<QString> html;
};

// The system clipboard, behind an interface so that the core needs no GUI library. The
// application installs the Qt clipboard; tests install one that records. Main thread only.
class ClipboardWriter
{
public:
    virtual ~ClipboardWriter() = default;
    // Replaces what the clipboard holds; false when it could not.
    virtual bool write(const ClipboardContent &content) = 0;

    // Through the installed writer; false when none is installed.
    static bool put(const ClipboardContent &content);
    // Plain text through the installed writer; without one, the text goes to the log.
    static void setText(const QString &text);
    static void install(ClipboardWriter *writer);
};
