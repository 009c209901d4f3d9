#include "requestview.h"

#include "requestview_p.h"
#include "ui_requestview.h"

#include "requestviewlogging.h"

using namespace vorandel;
using namespace requestview::detail;

// --- adding and removing requests --------------------------------------------------------------

void RequestView::addRequest()
{
    qCDebug(rvc) << "adding requests is not available yet";
}

void RequestView::removeRequests()
{
    qCDebug(rvc) << "removing requests is not available yet";
}
