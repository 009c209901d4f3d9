#pragma once

#include "queryrunner.h"
#include "service.h"
#include "servicerecords.h"

#include <QHash>
#include <QList>

namespace vdserver {

class ObjectStore;

// The exchange's own commands: e-mail to be sent, the fingerprint window, the asynchronous
// database query and the list of command types of the console's plug-ins.
//
// A command of a type that a plug-in of a console said it receives is passed on to the console
// that sent it, after its answer, and to no other; so plug-ins talk to each other through the exchange. The fingerprint
// window is such a plug-in; the server first decides whether biometrics may be edited at all
// (status 18 when the database setting "PT_PD_DENY_STORE_USER_PHOTOS" is "true").
// A database query is only taken at once; its result goes to "db.async_result:<identity>" a
// moment later.
class ExchangeCommands : public Service
{
    Q_OBJECT
public:
    // `peers` are those whose plug-ins may receive what is passed on.
    ExchangeCommands(const ObjectStore& store, const QList<Peer*>& peers, QObject* parent = nullptr);

    bool handles(const QString& name) const override;
    Reply handle(const Command& query, Peer& from) override;

    // How long the database takes to answer.
    void setResultDelay(int msecs) { m_resultDelay = msecs; }
    // Messages queued for sending, oldest first.
    QList<vorandel::EMAIL_MESSAGE> outbox() const { return m_outbox; }

private:
    using Operation = Reply (ExchangeCommands::*)(QDataStream&, Peer&);
    static const QHash<QString, Operation>& operations();

    Reply sendEmail(QDataStream& in, Peer& from);
    Reply showFingerprintWidget(QDataStream& in, Peer& from);
    Reply asyncQuery(QDataStream& in, Peer& from);
    Reply localPluginsInfo(QDataStream& in, Peer& from);

    bool servedLocally(const QString& name) const;
    // Passes a query on to the console's plug-in that receives it, once the answer is out.
    Reply relay(const Command& query, const Peer& from);

    const ObjectStore& m_store;
    QueryRunner m_queries;
    const QList<Peer*>& m_peers;
    QList<vorandel::EMAIL_MESSAGE> m_outbox;
    int m_resultDelay = 300;
};

}  // namespace vdserver
