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
};
