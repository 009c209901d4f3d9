#include "platformlogging.h"

Q_LOGGING_CATEGORY(lcExchange, "vd.platform.exchange", QtInfoMsg)
Q_LOGGING_CATEGORY(lcStorage, "vd.platform.storage", QtInfoMsg)
Q_LOGGING_CATEGORY(lcServices, "vd.platform.services", QtInfoMsg)
Q_LOGGING_CATEGORY(lcWidgets, "vd.platform.widgets", QtInfoMsg)
