#include "StatusLine.h"

#include <QCoreApplication>
#include <QTimeZone>

#include <algorithm>

namespace StatusLine {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("StatusLine", text);
}

// Animates with the wall clock: one more dot each second, four steps.
QString sortingText(const QDateTime &now)
{
    static const QDateTime referenceDate(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
    const qint64 seconds = referenceDate.secsTo(now);
    switch (((seconds % 4) + 4) % 4) {
    case 0:
        return tr("Sorting items.");
    case 1:
        return tr("Sorting items..");
    case 2:
        return tr("Sorting items...");
    default:
        return tr("Sorting items....");
    }
}

} // namespace

QString text(const OutputEngineViewModel &engine, const WriteEngineViewModel &writer,
             int selectedCount, const QDateTime &now)
{
    QString first;
    switch (engine.activeStage) {
    case OutputOperationTypeEnum::scanning:
        first = engine.indeterminateProgress
            ? sortingText(now)
            : tr("%1 items scanned...").arg(engine.currentItemProcessing);
        break;
    case OutputOperationTypeEnum::resorting:
        first = sortingText(now);
        break;
    case OutputOperationTypeEnum::computingOutput:
        first = tr("Computing output (%1/%2)...")
                    .arg(engine.currentItemProcessing)
                    .arg(engine.currentNumberOfItems);
        break;
    case OutputOperationTypeEnum::ready:
        first = writer.isActive
            ? tr("Writing %1 of %2...").arg(writer.currentFileIndex + 1).arg(writer.totalFileCount)
            : tr("Ready.");
        break;
    }
    return first
        + tr(" (%1 items | %2 selected | %3 metadata items). ")
              .arg(std::max(engine.totalItemProcessing, engine.currentNumberOfItems))
              .arg(selectedCount)
              .arg(engine.currentNumberOfMetadataItems);
}

} // namespace StatusLine
