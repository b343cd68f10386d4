#pragma once

#include "session/Node.h"

#include <QString>
#include <QStringList>

#include <functional>

// One edit of one file as it reaches the write engine: a flat tag, value list in the order the
// tags were set, and who wants to hear how the write went.
struct PendingWrite
{
    QString filePath;
    QStringList tagValuePairs;
    NodePtr node;
    // Called on the main thread with the write's success; may be empty.
    std::function<void(bool)> completionHandler;
    // Set for the writes of an undo or a redo: the undo journal's command they belong to and the
    // pairs that reverse them. An edit leaves both empty and joins its batch's command.
    quint64 undoCommand = 0;
    QStringList reversingPairs;
};
