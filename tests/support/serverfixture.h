#pragma once

#include "command.h"
#include "constants.h"
#include "server.h"
#include "teststore.h"
#include "vddatastream.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

// A seeded server on a fresh store of the engine under test, with a logged-in administrator, and
// helpers that send queries with real payloads and wait for the answer, as the console's exchange
// would.
class ServerFixture
{
public:
    ServerFixture();

    // Reads the store afresh, as a console that starts again; the administrator logs in again.
    // False, with the server's errorString(), when it can't be opened.
    bool reopen();

    // Serialises values the way the exchange writes a payload.
    template <typename... Values>
    static QByteArray payload(const Values&... values)
    {
        QByteArray bytes;
        VDDataStream out(&bytes, QIODevice::WriteOnly);
        (out << ... << values);
        return bytes;
    }

    // Sends a query and waits for its answer; no status if none came.
    Command send(const QString& name, const QByteArray& data);
    // A data operation in the name of a session (the administrator's by default).
    template <typename... Values>
    Command data(const QString& operation, const Values&... values)
    {
        return dataAs(session, operation, values...);
    }
    template <typename... Values>
    Command dataAs(const vdserver::Session& as, const QString& operation, const Values&... values)
    {
        return send(QStringLiteral("data.") + operation, payload(as.sessionId, values...));
    }
    vdserver::Session login(const QString& login) { return server.login(login).value_or(vdserver::Session()); }

    vorandel::ObjectInfo object(const QString& dataname, vorandel::TYPE_ID uid) const
    {
        return server.objects(dataname)->value(uid);
    }
    QList<vorandel::ObjectInfo> objects(const QString& dataname) const { return server.objects(dataname)->values(); }
    // Every table, by dataname.
    QHash<QString, vorandel::OBJECT_HASH> snapshot() const;
    // The first object of a dataname whose parameter has that value.
    vorandel::ObjectInfo find(const QString& dataname, const QString& key, const QString& value) const;
    vorandel::TYPE_ID userUid(const QString& login) const;
    vorandel::ObjectInfo confirmList(const QString& name) const;

    // The first value of an answer's payload: the failure text, or the uid of what changed.
    template <typename Value>
    static Value first(const Command& answer)
    {
        Value value{};
        VDDataStream in(answer.data);
        in >> value;
        return value;
    }

    TestStore store;
    vdserver::Server server;
    vdserver::Session session;
    QList<Command> pushed;
};

// The seed's confirm lists.
inline const QString Visitor = QStringLiteral("Разовый пропуск посетителя");  // petrov, then sidorova
inline const QString Contractor = QStringLiteral("Пропуск подрядной организации");  // sidorova, kozlov, petrov

vorandel::ObjectInfo record(vorandel::TYPE_ID uid, const QString& type, const QHash<QString, QString>& parameters = {});
// A card to issue.
vorandel::ObjectInfo card(vorandel::CARD_ID number);
// A new worker: no cards, no access; his uid.
vorandel::TYPE_ID hire(ServerFixture& f, const QHash<QString, QString>& parameters = {});
// Raises a request on the confirm list of that name (none for an empty name); its uid, 0 if refused.
vorandel::TYPE_ID raise(ServerFixture& f, const QString& list = QString());
// A decision of `actor` in the name of `user`, with the priority that `user` has on the chain.
Command decide(ServerFixture& f, vorandel::TYPE_ID request, const QString& actor, const QString& user,
               unsigned int type);
