#pragma once

#include "OutputFormatType.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

class DataModel;
class OutputEngine;

// Copying and saving the list's text, the two commands of the output settings. Every text format
// can be copied (the two "Copy to" forms as they put themselves on the clipboard, the others as
// plain text) and saved to a file in the chosen encoding. The map format makes no text, and a
// text that is still being computed, or was made by another format, is never handed out: the
// user would paste an old list or an empty one. Main thread.
class OutputCommands
{
public:
    enum class Availability { noText, computing, ready };

    OutputCommands(std::shared_ptr<OutputEngine> engine, DataModel &model);

    Availability availability() const;
    // A format chosen while the first scan ran leaves the engine with the scan's format, and it
    // starts nothing for the change. When the pipeline is idle with another format's text (or
    // none), this asks for the chosen format's text, once per list and format.
    void requestTextIfStale();
    // One sentence for the user about the availability.
    QString availabilityDescription() const;
    // The current format's file name extensions; the first is the one a file name gets.
    QStringList allowedFileTypes() const;
    QString proposedFileName() const;

    CommitResult copyOutput() const;
    CommitResult saveOutput(const QString &filePath) const;

private:
    struct ReadyText
    {
        QString text;
        OutputFormatType *format;
    };
    std::optional<ReadyText> readyText() const;
    CommitResult notAvailable(const QString &filePath = {}) const;

    std::shared_ptr<OutputEngine> m_engine;
    DataModel &m_model;
    // What requestTextIfStale last asked for.
    const void *m_requestedList = nullptr;
    std::optional<OutputFormatIndexEnum> m_requestedFormat;
};
