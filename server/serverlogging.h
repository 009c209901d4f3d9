#pragma once

#include <QLoggingCategory>

namespace vdserver {
// The server's one category, "vd.server".
Q_DECLARE_LOGGING_CATEGORY(lcServer)
}  // namespace vdserver
