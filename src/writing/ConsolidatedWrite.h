#pragma once

#include "PendingWrite.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

// All edits of one file that are written together, as one run of the write worker.
struct ConsolidatedWrite
{
    QString filePath;
    NodePtr node;
    QStringList allTagValuePairs;
    QList<std::function<void(bool)>> completionHandlers;
    // Those of the first edit (see PendingWrite).
    quint64 undoCommand = 0;
    QStringList reversingPairs;

    // Takes the first edit as it stands: repeats within its own list are left to the worker.
    static ConsolidatedWrite fromPendingWrite(const PendingWrite &write);

    // A tag already present keeps its place and takes the new value; a new tag goes at the end.
    void merge(const PendingWrite &write);
};
