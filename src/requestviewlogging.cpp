#include "requestviewlogging.h"

const QLoggingCategory& rvc()
{
    // Made at the first call and kept to the end of the process.
    static const QLoggingCategory category("gui.plugin.requestview");
    return category;
}
