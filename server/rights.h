#pragma once

#include "accounts.h"
#include "objectinfo.h"

#include <QCoreApplication>
#include <QString>

namespace vdserver {

// What a session may do and see, checked by the server on every call whatever the console's
// actions allowed: the same rights that gate the tab's actions.
//
// - A request is seen with "RL_PASS_REQUESTS_SHOW" and either "…_SHOW_ALL" or a place on its chain.
// - Raising one needs "…_CREATE"; changing its state (a decision without a chain) "…_CONFIRM";
//   changing anything else "…_UPDATE"; removing it "…_DELETE"; each on a request that the user sees.
// - A decision on a chain needs "…_CONFIRM" (whose turn it is, RequestWorkflow decides).
// - The visitors that the desk brings in, their cards, access and biometrics, are changed by
//   whoever raises, edits or removes requests; a visitor is dismissed by whoever rejects or removes.
// - The directory (users, departments, access groups, confirm lists, devices, jobs) is not the
//   desk's: only an account holding every right of the tab changes it.
//
// Each check returns the text of the refusal for the operator, empty when the call may go on.
class Rights
{
    Q_DECLARE_TR_FUNCTIONS(Rights)
public:
    static const QString Show;
    static const QString ShowAll;
    static const QString Create;
    static const QString Update;
    static const QString Delete;
    static const QString Confirm;

    static bool seesRequest(const Session& session, const vorandel::ObjectInfo& request);

    static QString mayAdd(const Session& session, const vorandel::ObjectInfo& object);
    // `stored` as it is, `changes` what the call would change.
    static QString mayUpdate(const Session& session, const vorandel::ObjectInfo& stored,
                             const vorandel::ObjectInfo& changes);
    static QString mayRemove(const Session& session, const vorandel::ObjectInfo& stored);
    static QString mayDecide(const Session& session);
    // Cards, access groups and biometrics of the desk's visitors.
    static QString mayEditVisitors(const Session& session);
    static QString mayDismiss(const Session& session);

private:
    Rights() = delete;
};

}  // namespace vdserver
