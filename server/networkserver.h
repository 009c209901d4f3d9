#pragma once

#include "logingate.h"

#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QString>

class QTcpServer;

namespace vdserver {

class ClientConnection;
class Server;

// The standalone server's side of the network: takes the connections of consoles on TCP and
// serves each as a peer of `server` (ClientConnection), passing the server's announcements on
// to every one of them.
class NetworkServer : public QObject
{
    Q_OBJECT
public:
    // How long a console may send nothing before it is dropped, unless set.
    static constexpr int DefaultIdleTimeoutMs = 30000;

    explicit NetworkServer(Server& server, QObject* parent = nullptr);
    ~NetworkServer() override;

    void setIdleTimeout(int msecs) { m_idleTimeoutMs = msecs; }
    // False, with errorString(), when the address can't be listened on.
    bool listen(const QHostAddress& address, quint16 port);
    QString errorString() const { return m_error; }
    QHostAddress address() const;
    quint16 port() const;
    int connectionCount() const { return m_connections.size(); }

private:
    void accept();

    Server& m_server;
    LoginGate m_gate;
    QTcpServer* m_listener = nullptr;
    QList<ClientConnection*> m_connections;
    int m_idleTimeoutMs = DefaultIdleTimeoutMs;
    QString m_error;
};

}  // namespace vdserver
