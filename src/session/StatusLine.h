#pragma once

#include "OutputTypes.h"
#include "writing/WriteEngineViewModel.h"

#include <QDateTime>
#include <QString>

// The status line under the list, from the two engines' status and the selection.
namespace StatusLine {

QString text(const OutputEngineViewModel &engine, const WriteEngineViewModel &writer,
             int selectedCount, const QDateTime &now = QDateTime::currentDateTimeUtc());

} // namespace StatusLine
