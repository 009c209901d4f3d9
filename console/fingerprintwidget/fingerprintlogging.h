#pragma once

#include <QLoggingCategory>

// The fingerprint window's category, "vd.console.fingerprint".
Q_DECLARE_LOGGING_CATEGORY(lcFingerprint)
