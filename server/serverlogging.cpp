#include "serverlogging.h"

namespace vdserver {
Q_LOGGING_CATEGORY(lcServer, "vd.server", QtInfoMsg)
}  // namespace vdserver
