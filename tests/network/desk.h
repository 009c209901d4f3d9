#pragma once

#include "command.h"
#include "seeddata.h"
#include "serverclient.h"
#include "storemirror.h"
#include "vddatastream.h"

#include <QString>

// A console's desk in a test: a connection to a standalone server and the mirror of its store,
// with helpers that wait for what they ask, as a test wants them.
class Desk
{
public:
    explicit Desk(quint16 port);

    // Logs in; the demo password of the login unless given. The result's error is the refusal.
    vdserver::ServerClient::LoginResult logIn(const QString& login, const QString& password = QString());
    // Logs in and loads the store's copy; false if either fails.
    bool open(const QString& login);
    // Waits until the mirror holds the whole current copy.
    bool waitUntilSynced(int msecs = 10000);

    // Sends a query and waits for its answer; no status if none came.
    Command ask(const QString& name, const QByteArray& data = {});
    // A data operation in the name of this desk's session.
    template <typename... Values>
    Command data(const QString& operation, const Values&... values)
    {
        return ask(QStringLiteral("data.") + operation, payload(client.session().sessionId, values...));
    }

    template <typename... Values>
    static QByteArray payload(const Values&... values)
    {
        QByteArray bytes;
        VDDataStream out(&bytes, QIODevice::WriteOnly);
        (out << ... << values);
        return bytes;
    }
    // The failure text of an answer, or the uid that it gives.
    static QString text(const Command& answer);
    static vorandel::TYPE_ID uid(const Command& answer);

    // The mirror's copy of an object; an invalid record when it has none.
    vorandel::ObjectInfo object(const QString& dataname, vorandel::TYPE_ID uid) const;
    vorandel::ObjectInfo find(const QString& dataname, const QString& key, const QString& value) const;

    vdserver::ServerClient client;
    vdserver::StoreMirror mirror;
};
