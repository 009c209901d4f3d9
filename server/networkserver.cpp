#include "networkserver.h"

#include "clientconnection.h"
#include "server.h"
#include "serverlogging.h"

#include <QTcpServer>
#include <QTcpSocket>

namespace vdserver {

namespace {
// Tells every connection; over a copy of the list, since one that can't keep up closes itself
// on the way.
template <typename Method, typename... Values>
void passOn(const QList<ClientConnection*> connections, Method method, const Values&... values)
{
    for (ClientConnection* connection : connections)
        (connection->*method)(values...);
}
}  // namespace

NetworkServer::NetworkServer(Server& server, QObject* parent)
    : QObject(parent), m_server(server), m_gate(server), m_listener(new QTcpServer(this))
{
    connect(m_listener, &QTcpServer::newConnection, this, &NetworkServer::accept);
    connect(&m_server, &Server::objectsChanged, this,
            [this](const QString& dataname, const QList<vorandel::ObjectInfo>& objects) {
                passOn(m_connections, &ClientConnection::objectsChanged, dataname, objects);
            });
    connect(&m_server, &Server::objectsRemoved, this,
            [this](const QString& dataname, const QList<vorandel::TYPE_ID>& uids) {
                passOn(m_connections, &ClientConnection::objectsRemoved, dataname, uids);
            });
    connect(&m_server, &Server::settingsChanged, this, [this](const QHash<QString, QString>& settings) {
        passOn(m_connections, &ClientConnection::settingsChanged, settings);
    });
    connect(&m_server, &Server::schedulesChanged, this,
            [this](const VDHash<int, vorandel::SCHEDULE_DATA>& schedules) {
                passOn(m_connections, &ClientConnection::schedulesChanged, schedules);
            });
}

NetworkServer::~NetworkServer()
{
    // The connections leave the server's peers before the server may go.
    qDeleteAll(m_connections);
}

bool NetworkServer::listen(const QHostAddress& address, quint16 port)
{
    if (!m_listener->listen(address, port)) {
        m_error = m_listener->errorString();
        return false;
    }
    qCInfo(lcServer).noquote() << "listening on" << QStringLiteral("%1:%2").arg(this->address().toString()).arg(this->port());
    return true;
}

QHostAddress NetworkServer::address() const
{
    return m_listener->serverAddress();
}

quint16 NetworkServer::port() const
{
    return m_listener->serverPort();
}

void NetworkServer::accept()
{
    while (QTcpSocket* socket = m_listener->nextPendingConnection()) {
        auto* connection = new ClientConnection(socket, m_server, m_gate, m_idleTimeoutMs, this);
        m_connections.append(connection);
        connect(connection, &ClientConnection::closed, this, [this, connection] {
            m_connections.removeAll(connection);
            connection->deleteLater();
        });
    }
}

}  // namespace vdserver
