#pragma once

#include "session/Node.h"

#include <QTimeZone>

#include <optional>

namespace CaptureTime {

// When a file was taken, in UTC seconds since 1970, from its read values: the original date
// with its stored offset, else read in zone; a movie's creation date, which is UTC. Nothing for
// a file without a usable date. Reads values the node has not read yet on the calling thread.
std::optional<double> of(const Node &node, const QTimeZone &zone);

// A value as the reader stored it, trimmed, or empty: a missing value is not "Null" here.
QString textValue(const Node &node, const QString &key);

} // namespace CaptureTime
