#include "serverclient.h"

#include "serverlogging.h"
#include "vddatastream.h"
#include "wire.h"

#include <QPointer>
#include <QTcpSocket>

#include <algorithm>
#include <utility>

namespace vdserver {

namespace {
// How long a connection may take to be made before it counts as failed.
constexpr int ConnectTimeoutMs = 5000;

QString noConnection()
{
    return ServerClient::tr("Нет связи с сервером");
}
}  // namespace

ServerClient::ServerClient(const QString& host, quint16 port, QObject* parent)
    : QObject(parent), m_host(host), m_port(port), m_socket(new QTcpSocket(this))
{
    qRegisterMetaType<State>();
    connect(m_socket, &QTcpSocket::connected, this, &ServerClient::onConnected);
    connect(m_socket, &QTcpSocket::readyRead, this, &ServerClient::readFrames);
    connect(m_socket, &QTcpSocket::disconnected, this,
            [this] { onDisconnected(tr("сервер закрыл соединение")); });
    connect(m_socket, &QAbstractSocket::errorOccurred, this, [this] {
        // A connection that never came up says so only here; a lost one also by disconnected.
        if (m_socket->state() == QAbstractSocket::UnconnectedState && !m_connected)
            onDisconnected(m_socket->errorString());
    });

    m_connectTimeout.setSingleShot(true);
    m_connectTimeout.setInterval(ConnectTimeoutMs);
    connect(&m_connectTimeout, &QTimer::timeout, this, [this] {
        if (!m_connected) {
            m_socket->abort();
            onDisconnected(tr("сервер не отвечает"));
        }
    });
    m_heartbeat.setInterval(10000);
    connect(&m_heartbeat, &QTimer::timeout, this, &ServerClient::beat);
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &ServerClient::connectToServer);
}

ServerClient::~ServerClient()
{
    // Whoever waits hears nothing more: the client that would answer is gone.
    m_pending.clear();
    m_socket->disconnect(this);
    m_socket->abort();
}

QString ServerClient::address() const
{
    return m_host.contains(QLatin1Char(':')) ? QStringLiteral("[%1]:%2").arg(m_host).arg(m_port)
                                             : QStringLiteral("%1:%2").arg(m_host).arg(m_port);
}

void ServerClient::setHeartbeat(int msecs)
{
    m_heartbeat.setInterval(msecs);
}

void ServerClient::setRetryDelays(int first, int longest)
{
    m_firstRetryMs = first;
    m_longestRetryMs = std::max(first, longest);
}

void ServerClient::logIn(const QString& login, const QString& password, LoginDone done)
{
    if (m_loginDone || m_state == State::Online || m_state == State::Reconnecting) {
        LoginResult busy;
        busy.error = tr("Вход уже выполнен");
        QMetaObject::invokeMethod(this, [done, busy] { done(busy); }, Qt::QueuedConnection);
        return;
    }
    m_login = login;
    m_password = password;
    m_loginDone = std::move(done);
    setState(State::Connecting);
    if (m_connected)
        sendLogin(false);
    else
        connectToServer();
}

void ServerClient::send(const Command& query, std::function<void(Command&)> reply)
{
    if (m_state != State::Online) {
        failLater(query, reply, noConnection());
        return;
    }
    write(query, std::move(reply));
}

void ServerClient::close()
{
    m_retry.stop();
    m_heartbeat.stop();
    setState(State::Disconnected);
    m_socket->abort();
}

void ServerClient::connectToServer()
{
    ++m_connections;
    m_reader = FrameReader();
    m_socket->abort();
    m_socket->connectToHost(m_host, m_port);
    m_connectTimeout.start();
}

void ServerClient::onConnected()
{
    m_connectTimeout.stop();
    m_connected = true;
    // Queries are small and wait for their answers: none should wait to fill a packet.
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_lastHeard.start();
    if (m_state == State::Connecting && m_loginDone)
        sendLogin(false);
    else if (m_state == State::Reconnecting)
        sendLogin(true);
}

void ServerClient::onDisconnected(const QString& reason)
{
    const bool wasConnected = std::exchange(m_connected, false);
    m_connectTimeout.stop();
    m_heartbeat.stop();
    failPending(noConnection());
    switch (m_state) {
    case State::Online:
        qCWarning(lcServer).noquote() << "lost the server" << address() << "-" << reason;
        setState(State::Reconnecting);
        emit connectionLost(reason);
        m_retryDelayMs = m_firstRetryMs;
        m_retry.start(m_retryDelayMs);
        break;
    case State::Reconnecting:
        // A connection that came up and fell again starts the pauses afresh.
        m_retryDelayMs = wasConnected ? m_firstRetryMs : std::min(m_retryDelayMs * 2, m_longestRetryMs);
        m_retry.start(m_retryDelayMs);
        break;
    case State::Connecting:
        setState(State::Disconnected);
        if (LoginDone done = std::exchange(m_loginDone, nullptr)) {
            LoginResult result;
            result.error = tr("Нет связи с сервером %1: %2").arg(address(), reason);
            done(result);
        }
        break;
    case State::Disconnected:
        break;
    }
}

void ServerClient::readFrames()
{
    const QPointer<ServerClient> self(this);
    m_reader.append(m_socket->readAll());
    Command command;
    for (;;) {
        switch (m_reader.next(command)) {
        case FrameReader::Result::NeedMore:
            return;
        case FrameReader::Result::Error:
            qCWarning(lcServer).noquote() << "broken answer of" << address() << "-" << m_reader.errorString();
            m_socket->abort();
            return;
        case FrameReader::Result::Command:
            break;
        }
        m_lastHeard.restart();
        if (command.id == 0) {
            emit pushed(command);
        } else if (Pending pending = m_pending.take(command.id); pending.reply) {
            command.id = pending.callerId;
            pending.reply(command);
        } else {
            qCDebug(lcServer) << "an answer nobody waits for" << command;
        }
        if (!self || !m_connected)
            return;
    }
}

void ServerClient::sendLogin(bool again)
{
    Command query;
    query.type = 8;
    query.name = wire::Login;
    VDDataStream out(&query.data, QIODevice::WriteOnly);
    out << m_login << m_password << (again ? m_session.sessionId : QByteArray());
    write(query, [this, again, connection = m_connections](Command& answer) {
        // The connection was lost on the way: that is handled where it is noticed.
        if (connection != m_connections || !m_connected)
            return;
        LoginResult result;
        VDDataStream in(answer.data);
        if (answer.ok()) {
            quint32 userId = 0;
            if (!vdstream::readAll(in, userId, result.session.login, result.displayName, result.session.roles,
                                   result.session.sessionId))
                result.error = tr("Сервер %1 ответил на вход непонятно").arg(address());
            result.session.userId = userId;
        } else {
            in >> result.error;
            if (result.error.isEmpty())
                result.error = tr("Вход не выполнен");
        }
        if (result.ok()) {
            m_session = result.session;
            setState(State::Online);
            m_heartbeat.start();
        }
        if (again) {
            if (result.ok()) {
                qCInfo(lcServer).noquote() << "back on the server" << address();
                emit reconnected();
            } else {
                qCWarning(lcServer).noquote() << "the server" << address() << "refused the login again:" << result.error;
                close();
                emit reconnectFailed(result.error);
            }
            return;
        }
        if (LoginDone done = std::exchange(m_loginDone, nullptr))
            done(result);
    });
}

void ServerClient::write(Command query, std::function<void(Command&)> reply)
{
    const quint64 wireId = ++m_lastId;
    m_pending.insert(wireId, {query.id, std::move(reply)});
    query.id = wireId;
    m_socket->write(FrameReader::frame(query));
}

void ServerClient::beat()
{
    const qint64 silence = m_lastHeard.elapsed();
    if (silence > m_heartbeat.interval() * 5 / 2) {
        qCWarning(lcServer).noquote() << "no word from" << address() << "for" << silence << "ms";
        m_socket->abort();
        // An abort of a connected socket reports its loss; make sure of it all the same.
        if (m_connected)
            onDisconnected(tr("сервер не отвечает"));
        return;
    }
    Command ping;
    ping.type = 8;
    ping.name = wire::Ping;
    write(ping, [](Command&) {});
}

void ServerClient::failPending(const QString& text)
{
    const QHash<quint64, Pending> pending = std::exchange(m_pending, {});
    for (const Pending& waiting : pending) {
        Command query;
        query.id = waiting.callerId;
        failLater(query, waiting.reply, text);
    }
}

void ServerClient::failLater(const Command& query, const std::function<void(Command&)>& reply, const QString& text)
{
    if (!reply)
        return;
    Command failed = query;
    failed.status = Command::StatusFailed;
    failed.data.clear();
    VDDataStream out(&failed.data, QIODevice::WriteOnly);
    out << text;
    QMetaObject::invokeMethod(this, [reply, failed]() mutable { reply(failed); }, Qt::QueuedConnection);
}

void ServerClient::setState(State state)
{
    if (m_state == state)
        return;
    m_state = state;
    emit stateChanged(state);
}

}  // namespace vdserver
