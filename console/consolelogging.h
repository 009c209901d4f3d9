#pragma once

#include <QLoggingCategory>

// The console's own category: loading and life cycle of the plug-ins, the session, the window.
Q_DECLARE_LOGGING_CATEGORY(lcConsole)
