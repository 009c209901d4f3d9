#include "requestview.h"

#include "requestview_p.h"
#include "ui_requestview.h"

#include "requestviewlogging.h"

using namespace vorandel;
using namespace requestview::detail;

// --- the request properties dialog -------------------------------------------------------------

void RequestView::showRequestProperties(TYPE_ID uid, bool first_show)
{
    qCDebug(rvc) << "properties of" << uid << first_show << "are not available yet";
}
