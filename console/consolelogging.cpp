#include "consolelogging.h"

Q_LOGGING_CATEGORY(lcConsole, "vd.console", QtInfoMsg)
