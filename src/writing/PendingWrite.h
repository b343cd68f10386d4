#pragma once

#include "session/Node.h"

#include <QString>
#include <QStringList>

#include <functional>

// One file's edit on its way to the write engine: the flat tag, value list in the order it
// must be written, and the handler told whether the write succeeded.
struct PendingWrite
{
    QString filePath;
    QStringList tagValuePairs;
    NodePtr node;
    std::function<void(bool)> completionHandler;
};
