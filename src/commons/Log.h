#pragma once

#include <QStringView>

// Diagnostic lines: one plain line each on standard error, no levels.
namespace Log {

void line(QStringView text);

} // namespace Log
