#pragma once

#include "platform/AlertPresenter.h"
#include "platform/ClipboardWriter.h"

#include <QList>
#include <QStringList>

// Stand-ins for the dialogs and the clipboard that record what the program shows and copies.

// Records each alert and answers the button given for it in turn (the first, by default).
class RecordingPresenter : public AlertPresenter
{
public:
    int present(const Alert &alert) override
    {
        alerts.append(alert);
        return answers.value(alerts.size() - 1, 0);
    }
    QList<Alert> alerts;
    QList<int> answers;
};

class RecordingClipboard : public ClipboardWriter
{
public:
    bool write(const ClipboardContent &content) override
    {
        written.append(content);
        texts.append(content.plainText);
        return true;
    }
    QList<ClipboardContent> written;
    QStringList texts;
};
