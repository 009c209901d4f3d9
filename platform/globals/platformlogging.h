#pragma once

#include <QLoggingCategory>

// Categories of the stand-in platform itself; the plug-ins log under their own.
Q_DECLARE_LOGGING_CATEGORY(lcExchange)
Q_DECLARE_LOGGING_CATEGORY(lcStorage)
Q_DECLARE_LOGGING_CATEGORY(lcServices)
Q_DECLARE_LOGGING_CATEGORY(lcWidgets)
