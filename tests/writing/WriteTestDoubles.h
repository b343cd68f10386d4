#pragma once

#include "platform/AlertPresenter.h"
#include "platform/ClipboardWriter.h"

#include <QFile>
#include <QList>
#include <QString>
#include <QStringList>

// Stand-ins for the dialogs and the clipboard in the write engine's tests, and a fresh copy of
// a fixture for each case.
namespace WriteTestDoubles {

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
        texts.append(content.plainText);
        return true;
    }
    QStringList texts;
};

// Replaces target with a copy of source; a failed copy ends the test run.
inline QString freshCopy(const QString &source, const QString &target)
{
    QFile::remove(target);
    if (!QFile::copy(source, target))
        qFatal("cannot copy %s to %s", qPrintable(source), qPrintable(target));
    return target;
}

} // namespace WriteTestDoubles
