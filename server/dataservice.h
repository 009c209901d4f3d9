#pragma once

#include "accounts.h"
#include "requestworkflow.h"
#include "service.h"
#include "servicerecords.h"

#include <QHash>
#include <QList>

namespace vdserver {

class ObjectStore;

// The data service: the commands "data.<operation>", whose payload is the session id and then
// the operation's arguments. Only a known session is served, in the name of whose session the
// peer may act, and only as far as its rights go (Rights).
//
// Values travel as text, and an empty one is no value: an object is stored without its empty
// parameters, and an update with an empty value removes that parameter. A worker's "PT_PHOTO"
// is kept as a blob, never as a parameter.
//
// A worker's access groups are links from the worker to each group, of the type that the change
// names (7 for a policy, 2 otherwise). Only the subject named changes, whatever "set_child" says:
// the subjects here are workers, who have no children. A department's access groups are links
// of type 7 from the department; a worker made in a department starts with a copy of them.
//
// A worker's cards are links of type 3 from him, and card objects that name him in
// "PT_SUBJECT_ID"; removing either side removes the other.
//
// A worker's biometric templates are kept with him and replaced as a whole; each needs a known
// kind (a finger 0 to 9, a palm 100 or 101, a face 200 or 201) and its data.
class DataService : public Service
{
    Q_OBJECT
public:
    DataService(ObjectStore& store, const QHash<QByteArray, Session>& sessions, QObject* parent = nullptr);

    bool handles(const QString& name) const override;
    Reply handle(const Command& query, Peer& from) override;

    // How long after the answer to "changeUserAccess" its notice follows.
    void setAccessNoticeDelay(int msecs) { m_accessNoticeDelay = msecs; }

private:
    using Operation = Reply (DataService::*)(const Session&, QDataStream&);
    static const QHash<QString, Operation>& operations();

    Reply addObject(const Session& session, QDataStream& in);
    Reply updateObject(const Session& session, QDataStream& in);
    Reply removeObject(const Session& session, QDataStream& in);
    Reply addObjectInherits(const Session& session, QDataStream& in);
    Reply changeUserAccess(const Session& session, QDataStream& in);
    // The flag after the two lists is read and has no effect here.
    Reply updateWorkerCards(const Session& session, QDataStream& in);
    Reply getUserFingers(const Session& session, QDataStream& in);
    Reply setUserFingers(const Session& session, QDataStream& in);
    Reply getBlobDataChange(const Session& session, QDataStream& in);
    Reply syslog(const Session& session, QDataStream& in);
    Reply dismissWorker(const Session& session, QDataStream& in);

    // A card needs a number that no other card carries, not counting the cards being released;
    // an error text, or empty.
    QString checkCard(const vorandel::ObjectInfo& card, const QList<vorandel::TYPE_ID>& released = {}) const;
    // A new worker takes the access groups of his department.
    void inheritDepartmentAccess(vorandel::ObjectInfo& worker) const;

    ObjectStore& m_store;
    const QHash<QByteArray, Session>& m_sessions;
    RequestWorkflow m_workflow;
    int m_accessNoticeDelay = 300;
};

}  // namespace vdserver
