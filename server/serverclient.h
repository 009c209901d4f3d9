#pragma once

#include "accounts.h"
#include "exchangetransport.h"
#include "framereader.h"

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>

class QTcpSocket;

namespace vdserver {

// A console's connection to a standalone server: the exchange over TCP (FrameReader), the login,
// and the commands that the server pushes.
//
// Answers find their queries by the command's id, which the client numbers itself on the wire and
// gives back as the caller set it; a pushed command carries none. While it is not connected every
// query fails at once, in a later turn, with "Нет связи с сервером". Once logged in it keeps the
// connection: it sends a sign of life when nothing else goes, takes the server for gone when
// nothing comes back for long, and after a loss tries again and again, logs in again with the same
// login, password and session, and says so (connectionLost, reconnected).
class ServerClient : public QObject, public ExchangeTransport
{
    Q_OBJECT
public:
    enum class State {
        Disconnected,  // never connected, closed, or refused at a login again
        Connecting,    // connecting or logging in for the first time
        Online,
        Reconnecting,  // lost; trying again
    };

    struct LoginResult
    {
        QString error;  // empty on success
        Session session;
        QString displayName;
        bool ok() const { return error.isEmpty(); }
    };
    using LoginDone = std::function<void(const LoginResult& result)>;

    ServerClient(const QString& host, quint16 port, QObject* parent = nullptr);
    ~ServerClient() override;

    QString host() const { return m_host; }
    quint16 port() const { return m_port; }
    // "HOST:PORT", for messages.
    QString address() const;

    // Connects, if not connected yet, and logs in; `done` gets the session, or why not. A refused
    // login leaves the connection open for another try.
    void logIn(const QString& login, const QString& password, LoginDone done);
    void send(const Command& query, std::function<void(Command&)> reply) override;
    // Ends the connection for good.
    void close();

    State state() const { return m_state; }
    bool isOnline() const { return m_state == State::Online; }
    const Session& session() const { return m_session; }

    // How often a sign of life goes out; the server is taken for gone after two and a half of
    // these without a word. 10 s unless set.
    void setHeartbeat(int msecs);
    // The first pause before connecting again after a loss; it doubles up to `longest`.
    void setRetryDelays(int first, int longest);

signals:
    void pushed(const Command& command);
    void stateChanged(vdserver::ServerClient::State state);
    // The connection is lost; queries fail until reconnected.
    void connectionLost(const QString& reason);
    // Back, and logged in again with the same session.
    void reconnected();
    // Back, but the server refused the login this time; no more tries.
    void reconnectFailed(const QString& reason);

private:
    struct Pending
    {
        quint64 callerId = 0;
        std::function<void(Command&)> reply;
    };

    void connectToServer();
    void onConnected();
    void onDisconnected(const QString& reason);
    void readFrames();
    void sendLogin(bool again);
    void write(Command query, std::function<void(Command&)> reply);
    void beat();
    void failPending(const QString& text);
    void setState(State state);
    // Fails a query in a later turn, as an answer of the server would come.
    void failLater(const Command& query, const std::function<void(Command&)>& reply, const QString& text);

    const QString m_host;
    const quint16 m_port;
    QTcpSocket* m_socket = nullptr;
    bool m_connected = false;
    quint64 m_connections = 0;  // connections begun so far
    QTimer m_connectTimeout;
    FrameReader m_reader;
    State m_state = State::Disconnected;
    QHash<quint64, Pending> m_pending;
    quint64 m_lastId = 0;

    QString m_login;
    QString m_password;
    Session m_session;
    LoginDone m_loginDone;  // a login asked for and not answered yet

    QTimer m_heartbeat;
    QElapsedTimer m_lastHeard;
    QTimer m_retry;
    int m_firstRetryMs = 500;
    int m_longestRetryMs = 5000;
    int m_retryDelayMs = 0;
};

}  // namespace vdserver

Q_DECLARE_METATYPE(vdserver::ServerClient::State)
