#pragma once

#include <QLoggingCategory>

// The toolkit's diagnostic lines, off unless the categories are enabled
// (QT_LOGGING_RULES="palomet.bricks*.debug=true").
Q_DECLARE_LOGGING_CATEGORY(lcBricks)
// The trace of a build, one line per step.
Q_DECLARE_LOGGING_CATEGORY(lcBricksBuild)
