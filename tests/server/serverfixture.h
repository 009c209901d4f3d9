#pragma once

#include "command.h"
#include "server.h"
#include "vddatastream.h"

#include <QHash>
#include <QList>
#include <QString>

// A seeded server with a logged-in administrator, and helpers that send queries with real
// payloads and wait for the answer, as the console's exchange would.
class ServerFixture
{
public:
    explicit ServerFixture(int requests = 48);

    // Serialises values the way the exchange writes a payload.
    template <typename... Values>
    static QByteArray payload(const Values&... values)
    {
        QByteArray bytes;
        if constexpr (sizeof...(Values) > 0) {
            VDDataStream out(&bytes, QIODevice::WriteOnly);
            (out << ... << values);
        }
        return bytes;
    }

    // Sends a query and waits for its answer; status 0 if none came.
    Command send(const QString& name, const QByteArray& data);
    template <typename... Values>
    Command call(const QString& name, const Values&... values)
    {
        return send(name, payload(values...));
    }
    // A data operation in the name of a session (the administrator's by default).
    template <typename... Values>
    Command data(const QString& operation, const Values&... values)
    {
        return send(QStringLiteral("data.") + operation, payload(session.sessionId, values...));
    }
    template <typename... Values>
    Command dataAs(const vdserver::Session& as, const QString& operation, const Values&... values)
    {
        return send(QStringLiteral("data.") + operation, payload(as.sessionId, values...));
    }

    vdserver::Session loginAs(const QString& login);
    // Lets queued announcements and timers run.
    static void settle(int msecs = 0);

    vorandel::ObjectInfo object(const QString& dataname, vorandel::TYPE_ID uid) const;
    QList<vorandel::ObjectInfo> objects(const QString& dataname) const;
    QHash<QString, vorandel::OBJECT_HASH> snapshot() const;
    vorandel::TYPE_ID userUid(const QString& login) const;
    // A confirm list of the seed by its name.
    vorandel::ObjectInfo confirmList(const QString& name) const;
    // A worker of the seed in service, without cards.
    vorandel::ObjectInfo workerWithoutCards() const;

    static QString failureText(const Command& answer);
    static int uidOf(const Command& answer);

    vdserver::Server server;
    vdserver::Session session;
    QList<Command> pushed;
};
