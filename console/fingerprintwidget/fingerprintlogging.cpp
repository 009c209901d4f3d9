#include "fingerprintlogging.h"

Q_LOGGING_CATEGORY(lcFingerprint, "vd.console.fingerprint", QtInfoMsg)
