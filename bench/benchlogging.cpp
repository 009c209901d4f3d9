#include "benchlogging.h"

Q_LOGGING_CATEGORY(lcBench, "vd.bench", QtInfoMsg)
