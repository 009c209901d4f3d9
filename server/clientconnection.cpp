#include "clientconnection.h"

#include "constants.h"
#include "logingate.h"
#include "objectstore.h"
#include "rights.h"
#include "server.h"
#include "serverlogging.h"
#include "vddatastream.h"
#include "wire.h"

#include <QTcpSocket>

#include <algorithm>

namespace vdserver {

using vorandel::ObjectInfo;
using vorandel::TYPE_ID;

namespace {
// Objects in one frame, and in one turn of the event loop while a snapshot goes out: the other
// consoles wait no longer than that takes.
constexpr int ObjectsPerFrame = 1000;
constexpr int ObjectsPerTurn = 4000;
// A snapshot waits for the console to read what it was sent when that is more than this.
constexpr qint64 SnapshotBacklog = 8 * 1024 * 1024;

template <typename... Values>
Command pushed(const QString& name, const Values&... values)
{
    Command command;
    command.type = 8;
    command.name = name;
    command.status = Command::StatusOk;
    if constexpr (sizeof...(Values) > 0) {
        VDDataStream out(&command.data, QIODevice::WriteOnly);
        (out << ... << values);
    }
    return command;
}

template <typename... Values>
QByteArray payload(const Values&... values)
{
    QByteArray bytes;
    if constexpr (sizeof...(Values) > 0) {
        VDDataStream out(&bytes, QIODevice::WriteOnly);
        (out << ... << values);
    }
    return bytes;
}
}  // namespace

ClientConnection::ClientConnection(QTcpSocket* socket, Server& server, LoginGate& gate, int idleTimeoutMs,
                                   QObject* parent)
    : QObject(parent), m_socket(socket), m_server(server), m_gate(gate),
      m_address(QStringLiteral("%1:%2").arg(socket->peerAddress().toString()).arg(socket->peerPort()))
{
    socket->setParent(this);
    // An answer and the pushes behind it are small frames written one after another: held back
    // until the console acknowledges the first, they would wait for its delayed acknowledgement.
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_idle.setSingleShot(true);
    m_idle.setInterval(idleTimeoutMs);
    connect(&m_idle, &QTimer::timeout, this, [this] { close(QStringLiteral("silent for %1 ms").arg(m_idle.interval())); });
    connect(socket, &QTcpSocket::readyRead, this, &ClientConnection::readFrames);
    connect(socket, &QTcpSocket::bytesWritten, this, [this] {
        if (m_snapshotQuery && m_socket && m_socket->bytesToWrite() < SnapshotBacklog / 2)
            continueSnapshot();
    });
    connect(socket, &QTcpSocket::disconnected, this, [this] {
        // The last bytes may come with the end of the connection.
        readFrames();
        if (m_closing)
            return;
        close(m_reader.hasPartialFrame() ? QStringLiteral("disconnected in the middle of a frame (truncated)")
                                         : QStringLiteral("disconnected"));
    });
    m_server.addPeer(this);
    m_idle.start();
    qCInfo(lcServer).noquote() << "connection from" << m_address;
}

ClientConnection::~ClientConnection()
{
    if (m_session)
        m_server.closeSession(m_session->sessionId, *this);
    m_server.removePeer(this);
}

QString ClientConnection::describe() const
{
    return m_session ? QStringLiteral("%1 at %2").arg(m_session->login, m_address) : m_address;
}

bool ClientConnection::mayActAs(const Session& session) const
{
    return m_session && m_session->sessionId == session.sessionId;
}

void ClientConnection::push(const Command& command)
{
    // Pushes carry no id: a console tells them from the answers to its queries by that.
    Command out = command;
    out.id = 0;
    write(out);
}

void ClientConnection::readFrames()
{
    if (!m_socket)
        return;
    m_reader.append(m_socket->readAll());
    Command query;
    for (;;) {
        switch (m_reader.next(query)) {
        case FrameReader::Result::NeedMore:
            return;
        case FrameReader::Result::Error:
            close(m_reader.errorString());
            return;
        case FrameReader::Result::Command:
            if (!m_loggingIn)
                m_idle.start();
            handle(query);
            if (m_closing)
                return;
            break;
        }
    }
}

void ClientConnection::handle(const Command& query)
{
    if (query.name == wire::Ping) {
        answer(query, Command::StatusOk);
    } else if (query.name == wire::Login) {
        logIn(query);
    } else if (query.name == wire::Snapshot) {
        startSnapshot(query);
    } else {
        const QPointer<ClientConnection> self(this);
        m_server.receive(this, query, [self](Command& reply) {
            if (self)
                self->write(reply);
        });
    }
}

void ClientConnection::answer(const Command& query, int status, const QByteArray& data)
{
    Command reply = query;
    reply.status = status;
    reply.data = data;
    write(reply);
}

void ClientConnection::write(const Command& command)
{
    if (m_closing || !m_socket)
        return;
    m_socket->write(FrameReader::frame(command));
    if (m_socket->bytesToWrite() > MaxUnread)
        close(QStringLiteral("leaves %1 bytes unread").arg(m_socket->bytesToWrite()));
}

void ClientConnection::close(const QString& reason)
{
    if (m_closing)
        return;
    m_closing = true;
    m_idle.stop();
    qCInfo(lcServer).noquote() << "closed" << describe() << "-" << reason;
    if (m_socket) {
        m_socket->disconnect(this);
        m_socket->abort();
    }
    emit closed();
}

void ClientConnection::logIn(const Command& query)
{
    QString login;
    QString password;
    QByteArray resume;
    VDDataStream in(query.data);
    if (!vdstream::readAll(in, login, password, resume)) {
        answer(query, Command::StatusFailed, payload(tr("Неполные или повреждённые данные запроса")));
        return;
    }
    if (m_session || m_loggingIn) {
        answer(query, Command::StatusFailed, payload(tr("Вход уже выполнен")));
        return;
    }
    m_loggingIn = true;
    // A console waits in silence while its password is checked, which may be slowed down on
    // purpose: that is no idleness of its own.
    m_idle.stop();
    const QHostAddress address = m_socket ? m_socket->peerAddress() : QHostAddress();
    m_gate.check(address, login, password, this, [this, query, resume](const std::optional<Account>& account) {
        m_loggingIn = false;
        m_idle.start();
        if (!account) {
            answer(query, Command::StatusFailed, payload(tr("Неверное имя пользователя или пароль")));
            return;
        }
        m_session = m_server.openSession(*account, *this, resume);
        answer(query, Command::StatusOk,
               payload(quint32(m_session->userId), m_session->login, account->displayName, m_session->roles,
                       m_session->sessionId));
    });
}

void ClientConnection::startSnapshot(const Command& query)
{
    if (!m_session) {
        answer(query, Command::StatusFailed, payload(tr("Вход не выполнен")));
        return;
    }
    if (m_snapshotQuery) {
        answer(query, Command::StatusFailed, payload(tr("Данные уже передаются")));
        return;
    }
    // From here on every change is pushed as well: one that overtakes the snapshot is pushed
    // again with it, never lost.
    m_following = true;
    m_shownRequests.clear();
    m_snapshot.clear();
    qint32 total = 0;
    for (const QString& dataname : ObjectStore::datanames()) {
        const vorandel::OBJECT_HASH* objects = m_server.objects(dataname);
        QList<TYPE_ID> uids;
        uids.reserve(objects->size());
        for (const ObjectInfo& object : *objects) {
            if (dataname != vorandel::PASS_REQUEST_DATANAME || sees(object))
                uids.append(object.uid);
        }
        std::sort(uids.begin(), uids.end());
        total += uids.size();
        m_snapshot.append({dataname, uids});
    }
    m_snapshotQuery = query;
    write(pushed(wire::StoreBegin, total));
    write(pushed(wire::StoreSettings, m_server.dbSettings()));
    write(pushed(wire::StoreSchedules, static_cast<const QHash<int, vorandel::SCHEDULE_DATA>&>(m_server.schedules())));
    continueSnapshot();
}

void ClientConnection::continueSnapshot()
{
    if (!m_snapshotQuery || m_closing || !m_socket)
        return;
    int budget = ObjectsPerTurn;
    while (!m_snapshot.isEmpty() && budget > 0) {
        if (m_socket->bytesToWrite() > SnapshotBacklog)
            return;  // bytesWritten brings us back
        auto& [dataname, uids] = m_snapshot.first();
        const int count = std::min({budget, ObjectsPerFrame, int(uids.size())});
        const vorandel::OBJECT_HASH* table = m_server.objects(dataname);
        QList<ObjectInfo> objects;
        objects.reserve(count);
        for (int i = 0; i < count; ++i) {
            // One gone meanwhile has had its removal pushed already.
            const auto found = table->constFind(uids.at(i));
            if (found != table->cend() && (dataname != vorandel::PASS_REQUEST_DATANAME || sees(*found)))
                objects.append(*found);
        }
        uids.erase(uids.begin(), uids.begin() + count);
        budget -= count;
        if (dataname == vorandel::PASS_REQUEST_DATANAME) {
            for (const ObjectInfo& request : qAsConst(objects))
                m_shownRequests.insert(request.uid);
        }
        if (!objects.isEmpty() || uids.isEmpty())
            write(pushed(wire::StoreObjects, dataname, objects));
        if (uids.isEmpty())
            m_snapshot.removeFirst();
    }
    if (!m_snapshot.isEmpty()) {
        QMetaObject::invokeMethod(this, &ClientConnection::continueSnapshot, Qt::QueuedConnection);
        return;
    }
    write(pushed(wire::StoreEnd));
    const Command query = *m_snapshotQuery;
    m_snapshotQuery.reset();
    answer(query, Command::StatusOk);
    qCInfo(lcServer).noquote() << "store sent to" << describe();
}

void ClientConnection::objectsChanged(const QString& dataname, const QList<ObjectInfo>& objects)
{
    if (!m_following)
        return;
    if (dataname != vorandel::PASS_REQUEST_DATANAME) {
        pushObjects(dataname, objects);
        return;
    }
    QList<ObjectInfo> shown;
    QList<TYPE_ID> hidden;
    for (const ObjectInfo& request : objects) {
        if (sees(request)) {
            shown.append(request);
            m_shownRequests.insert(request.uid);
        } else if (m_shownRequests.remove(request.uid)) {
            hidden.append(request.uid);
        }
    }
    pushObjects(dataname, shown);
    pushRemoved(dataname, hidden);
}

void ClientConnection::objectsRemoved(const QString& dataname, const QList<TYPE_ID>& uids)
{
    if (!m_following)
        return;
    if (dataname != vorandel::PASS_REQUEST_DATANAME) {
        pushRemoved(dataname, uids);
        return;
    }
    QList<TYPE_ID> shown;
    for (TYPE_ID uid : uids) {
        if (m_shownRequests.remove(uid))
            shown.append(uid);
    }
    pushRemoved(dataname, shown);
}

void ClientConnection::settingsChanged(const QHash<QString, QString>& settings)
{
    if (m_following)
        write(pushed(wire::StoreSettings, settings));
}

void ClientConnection::schedulesChanged(const VDHash<int, vorandel::SCHEDULE_DATA>& schedules)
{
    if (m_following)
        write(pushed(wire::StoreSchedules, static_cast<const QHash<int, vorandel::SCHEDULE_DATA>&>(schedules)));
}

void ClientConnection::pushObjects(const QString& dataname, const QList<ObjectInfo>& objects)
{
    for (int first = 0; first < objects.size(); first += ObjectsPerFrame)
        write(pushed(wire::StoreObjects, dataname, objects.mid(first, ObjectsPerFrame)));
}

void ClientConnection::pushRemoved(const QString& dataname, const QList<TYPE_ID>& uids)
{
    if (!uids.isEmpty())
        write(pushed(wire::StoreRemoved, dataname, uids));
}

bool ClientConnection::sees(const ObjectInfo& request) const
{
    return m_session && Rights::seesRequest(*m_session, request);
}

}  // namespace vdserver
