#include "ConsolidatedWrite.h"

namespace {

void requireEvenLength(const QStringList &pairs, const QString &path)
{
    if (pairs.size() % 2 != 0)
        qFatal("Tag and value list of odd length for %s", qPrintable(path));
}

} // namespace

ConsolidatedWrite ConsolidatedWrite::fromPendingWrite(const PendingWrite &write)
{
    requireEvenLength(write.tagValuePairs, write.filePath);
    ConsolidatedWrite consolidated {write.filePath,    write.node,          write.tagValuePairs, {},
                                    write.undoCommand, write.reversingPairs};
    if (write.completionHandler)
        consolidated.completionHandlers.append(write.completionHandler);
    return consolidated;
}

void ConsolidatedWrite::merge(const PendingWrite &write)
{
    requireEvenLength(write.tagValuePairs, write.filePath);
    for (qsizetype i = 0; i + 1 < write.tagValuePairs.size(); i += 2) {
        const QString &tag = write.tagValuePairs.at(i);
        const QString &value = write.tagValuePairs.at(i + 1);
        bool found = false;
        for (qsizetype j = 0; j + 1 < allTagValuePairs.size(); j += 2) {
            if (allTagValuePairs.at(j) == tag) {
                allTagValuePairs[j + 1] = value;
                found = true;
                break;
            }
        }
        if (!found)
            allTagValuePairs << tag << value;
    }
    if (write.completionHandler)
        completionHandlers.append(write.completionHandler);
}
