#pragma once

#include "accounts.h"

#include <QElapsedTimer>
#include <QHash>
#include <QHostAddress>
#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <optional>

namespace vdserver {

class Server;

// Checks the passwords of logins from the network. A check costs a fraction of a second on
// purpose, so it runs on a pool thread while the server goes on serving the others; an unknown
// login costs as long as a wrong password. After FreeFailures failures in a row from one
// address, each further attempt from it waits before it is checked: a second, then twice as long
// each time, up to MaxPauseMs; attempts from there wait their turn one after the other.
class LoginGate : public QObject
{
    Q_OBJECT
public:
    static constexpr int FreeFailures = 5;
    static constexpr int MaxPauseMs = 30000;

    explicit LoginGate(Server& server, QObject* parent = nullptr);

    using Done = std::function<void(const std::optional<Account>& account)>;
    // Checks `password` for `login`. `done` gets the account, or nullopt when refused, in a
    // later turn of the event loop, unless `receiver` is gone by then.
    void check(const QHostAddress& address, const QString& login, const QString& password, QObject* receiver,
               Done done);

    // Failures in a row from this address, as they count now.
    int failures(const QHostAddress& address) const;

private:
    struct Record
    {
        int failures = 0;
        qint64 notBefore = 0;    // on m_clock: when the next attempt may be checked
        qint64 lastFailure = 0;  // on m_clock
    };

    void verify(const QString& address, const QString& login, const QString& password, QPointer<QObject> receiver,
                Done done);
    void settle(const QString& address, const QString& login, bool accepted);

    Server& m_server;
    QHash<QString, Record> m_records;
    QElapsedTimer m_clock;
};

}  // namespace vdserver
