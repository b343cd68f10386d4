#pragma once

#include <QString>

// Byte counts as a file browser words them: decimal units (1 KB = 1000 bytes), kilobytes whole,
// megabytes with one decimal and larger units with two, trailing zeros dropped: "Zero KB",
// "1 byte", "999 bytes", "1 KB", "1.2 MB", "3.25 GB".
namespace ByteCountFormatter {

QString stringFromByteCount(qint64 byteCount);

} // namespace ByteCountFormatter
