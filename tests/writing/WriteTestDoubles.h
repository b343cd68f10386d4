#pragma once

#include "RecordingDoubles.h"

#include <QFile>
#include <QList>
#include <QString>
#include <QStringList>

// Stand-ins for the dialogs and the clipboard in the write engine's tests, and a fresh copy of
// a fixture for each case.
namespace WriteTestDoubles {

using ::RecordingClipboard;
using ::RecordingPresenter;

// Replaces target with a copy of source; a failed copy ends the test run.
inline QString freshCopy(const QString &source, const QString &target)
{
    QFile::remove(target);
    if (!QFile::copy(source, target))
        qFatal("cannot copy %s to %s", qPrintable(source), qPrintable(target));
    return target;
}

} // namespace WriteTestDoubles
