#pragma once

#include "objectinfo.h"

#include <QCoreApplication>
#include <QList>
#include <QString>

namespace vdserver {

class ObjectStore;

// The rules by which a pass request is confirmed.
//
// A confirm list (dataname "confirm_list", type "OT_CONFIRM_LIST", its name in "PT_NAME") keeps
// its members as links of type 23 from the list to each user, with the user's priority: the
// same form as the chain of a request. A request raised with "PT_CONFIRM_LIST" gets a copy of
// them as its chain, links of type 23 from the request. The chain sorted by priority, less as
// many members from its front as there are confirmations (24), gives the member whose turn it
// is: confirmations are counted, not matched, so one person may stand twice in a chain, and
// members of equal priority take their turns in any order. A decision copies that member's chain
// link with the type changed: 24 confirms, 25 rejects. A rejection makes the request state "1";
// the last confirmation makes it "2".
//
// Each operation works on the caller's copy of a request and returns an error text for the
// operator, empty when the change is accepted; a refused copy is not to be stored.
class RequestWorkflow
{
    Q_DECLARE_TR_FUNCTIONS(RequestWorkflow)
public:
    explicit RequestWorkflow(const ObjectStore& store);

    // A new request: its links are the server's, so the given ones are dropped and the chain of
    // its confirm list attached. The request must have its uid.
    QString prepareNew(vorandel::ObjectInfo& request) const;
    // An edited request: a state written directly must be one of the known ones, and a request
    // with a chain becomes confirmed only by walking it. A new confirm list replaces the chain
    // as long as nobody has decided yet.
    QString prepareUpdate(const vorandel::ObjectInfo& stored, vorandel::ObjectInfo& request) const;
    // A confirmation or rejection by `actor`, who may decide only for himself and in his turn.
    static QString decide(vorandel::ObjectInfo& request, const vorandel::INHERIT_DATA& decision,
                          vorandel::TYPE_ID actor);

    // The links of type 23, in the order of their priorities.
    static QList<vorandel::INHERIT_DATA> chain(const vorandel::ObjectInfo& request);

private:
    QString attachChain(vorandel::ObjectInfo& request) const;

    const ObjectStore& m_store;
};

}  // namespace vdserver
