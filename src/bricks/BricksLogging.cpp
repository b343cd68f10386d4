#include "BricksLogging.h"

Q_LOGGING_CATEGORY(lcBricks, "palomet.bricks", QtWarningMsg)
Q_LOGGING_CATEGORY(lcBricksBuild, "palomet.bricks.build", QtWarningMsg)
