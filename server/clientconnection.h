#pragma once

#include "accounts.h"
#include "framereader.h"
#include "objectinfo.h"
#include "peer.h"
#include "servicerecords.h"
#include "vdhash.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QTimer>

#include <optional>

class QTcpSocket;

namespace vdserver {

class LoginGate;
class Server;

// One console connected to the standalone server over TCP: frames in, frames out.
//
// It must log in first; until then every other query is refused. Once it has asked for the
// store's copy (wire::Snapshot), it is pushed every committed change, as far as its user may see:
// a request that he may no longer see is pushed as removed. A connection that breaks the framing
// is closed at once; one that sends no whole frame for the idle time, or leaves more than
// MaxUnread bytes of pushes unread, is dropped. None of this touches another connection.
class ClientConnection : public QObject, public Peer
{
    Q_OBJECT
public:
    // Pushes that a console may leave unread before it is taken for gone.
    static constexpr qint64 MaxUnread = 256 * 1024 * 1024;

    // Takes over `socket`.
    ClientConnection(QTcpSocket* socket, Server& server, LoginGate& gate, int idleTimeoutMs,
                     QObject* parent = nullptr);
    ~ClientConnection() override;

    QString describe() const override;
    bool isLoggedIn() const override { return m_session.has_value(); }
    bool mayActAs(const Session& session) const override;
    void push(const Command& command) override;

    // The server's announcements, passed on as far as this console follows them.
    void objectsChanged(const QString& dataname, const QList<vorandel::ObjectInfo>& objects);
    void objectsRemoved(const QString& dataname, const QList<vorandel::TYPE_ID>& uids);
    void settingsChanged(const QHash<QString, QString>& settings);
    void schedulesChanged(const VDHash<int, vorandel::SCHEDULE_DATA>& schedules);

signals:
    // The connection has ended; it may be deleted.
    void closed();

private:
    void readFrames();
    void handle(const Command& query);
    void answer(const Command& query, int status, const QByteArray& data = {});
    void write(const Command& command);
    void close(const QString& reason);

    void logIn(const Command& query);
    void startSnapshot(const Command& query);
    void continueSnapshot();
    // Pushes objects in frames of a sensible size.
    void pushObjects(const QString& dataname, const QList<vorandel::ObjectInfo>& objects);
    void pushRemoved(const QString& dataname, const QList<vorandel::TYPE_ID>& uids);
    bool sees(const vorandel::ObjectInfo& request) const;

    QPointer<QTcpSocket> m_socket;
    Server& m_server;
    LoginGate& m_gate;
    FrameReader m_reader;
    QTimer m_idle;
    QString m_address;
    bool m_closing = false;

    std::optional<Session> m_session;
    bool m_loggingIn = false;
    // Following the store: the requests pushed so far that are still there.
    bool m_following = false;
    QSet<vorandel::TYPE_ID> m_shownRequests;
    // What the snapshot still has to push, dataname by dataname, and the query it answers.
    QList<QPair<QString, QList<vorandel::TYPE_ID>>> m_snapshot;
    std::optional<Command> m_snapshotQuery;
};

}  // namespace vdserver
