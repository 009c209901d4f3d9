#pragma once

#include "accounts.h"
#include "command.h"
#include "exchangetransport.h"
#include "objectinfo.h"
#include "objectsource.h"
#include "objectstore.h"
#include "seeddata.h"
#include "storelocation.h"
#include "servicerecords.h"
#include "vdhash.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

#include <array>
#include <functional>
#include <memory>
#include <optional>

namespace vdserver {

class DataService;
class DeviceService;
class EmbeddedPeer;
class ExchangeCommands;
class Peer;
class Service;
struct Reply;

// The server: the authority over the objects. It answers the queries of the exchange, applies
// the changes, works out the states of pass requests and pushes its notices, and it publishes
// its objects to whoever keeps a copy of them.
//
// Every query is answered exactly once, in a later turn of the event loop, never inside send():
// status 1 on success, otherwise a failure status with a text for the operator as the first
// value of the payload. What a query changed is announced through objectsChanged and
// objectsRemoved after its answer, in a later turn again, with the objects as they are then.
//
// Each query is one transaction of the store: what it changes is kept whole, before the answer
// goes out, or not at all when it is refused or cannot be kept ("error_db: " and the reason).
// A PostgreSQL server that restarts, or ends the store's connection, is connected to again
// before the next query (ObjectStore::keepConnected).
//
// Queries come from peers: the console that embeds the server sends through send(), consoles on
// the network through receive(). A command that the server pushes goes to every peer whose
// plug-ins receive its name, and to the embedded console when no peer on the network does.
class Server : public ObjectSource, public ExchangeTransport
{
    Q_OBJECT
public:
    // A server with an empty store in memory.
    explicit Server(QObject* parent = nullptr);
    ~Server() override;

    // Keeps the objects at `location` from now on, reading what is there; sessions end. False,
    // with errorString(), when the store can't be opened; then the server keeps what it had.
    bool open(const StoreLocation& location);
    // Whether the store that open() found holds nothing yet.
    bool isNewStore() const { return m_store.isNew(); }
    QString storeName() const;
    QString errorString() const { return m_error; }

    // Replaces everything with a fresh demo set, in one transaction; sessions end. False, with
    // errorString(), when it can't be kept; then the store stays as it was.
    bool seed(const SeedOptions& options = {}, SeedProgress progress = {});
    // The users who can log in.
    QList<Account> accounts() const;
    std::optional<Account> account(const QString& login) const;
    // An administrator holding every right.
    QString defaultLogin() const;
    // A new session of a seeded user, in the embedded console, which needs no password; nullopt
    // for an unknown login.
    std::optional<Session> login(const QString& login);
    // A session of `account` for `peer`, who has proved who he is. A console that comes back
    // names the session it had (`resume`), and gets it again unless another user holds it.
    Session openSession(const Account& account, const Peer& peer, const QByteArray& resume = {});
    // Ends a session of that peer; one that another peer has taken over stays.
    void closeSession(const QByteArray& sessionId, const Peer& peer);
    // The hash of a user's password; empty when he has none.
    QByteArray passwordHash(vorandel::TYPE_ID user);
    // Sets a user's password; false, with errorString(), for an unknown login or a failed write.
    bool setPassword(const QString& login, const QString& password);

    // Queries of the embedded console.
    void send(const Command& query, std::function<void(Command&)> reply) override;
    // Where the commands pushed to the embedded console go (it passes VDServerInterface::deliver).
    void setPushTarget(std::function<void(Command&)> push);
    // Consoles on the network: each is served while it is added.
    void addPeer(Peer* peer);
    void removePeer(Peer* peer);
    // A query of a peer; answered as send() answers, unless the peer is removed meanwhile.
    void receive(Peer* peer, const Command& query, std::function<void(Command&)> reply);
    void publish() override;
    // How long after the answer to an access change its notice follows; 300 ms unless set.
    void setAccessNoticeDelay(int msecs);
    // How long a device or the database takes to push its result; 300 ms unless set.
    void setResultDelay(int msecs);
    // Changes a database setting and announces the settings; false, with errorString(), when
    // it can't be kept.
    bool setDbSetting(const QString& key, const QString& value);
    // With a card holder, a card reader waits for presentCard() instead of reading a card of its
    // own; cardWanted says when one waits (see DeviceService).
    void setCardHolder(bool present);
    void presentCard(const QString& identity, unsigned int device, std::optional<vorandel::CARD_ID> number);

    const vorandel::OBJECT_HASH* objects(const QString& dataname) const;
    QHash<QString, QString> dbSettings() const { return m_store.settings(); }
    VDHash<int, vorandel::SCHEDULE_DATA> schedules() const { return m_store.schedules(); }
    // Templates of a worker.
    QVector<vorandel::TEMPLATE_DATA> templates(vorandel::TYPE_ID worker) const { return m_store.templates(worker); }
    QList<vorandel::EMAIL_MESSAGE> outbox() const;
    QList<vorandel::SYSLOG_DATA> syslogEntries() const;
    // The command types that the embedded console's plug-ins last said they receive.
    COMMAND_LIST localCommandTypes() const;

signals:
    // A reader waits for a card for this identity.
    void cardWanted(const QString& identity, unsigned int device);

private:
    std::array<Service*, 3> services() const;
    void run(Peer& from, const Command& query, const std::function<void(Command&)>& reply);
    Reply handle(Peer& from, const Command& query);
    void announce(const ObjectChanges& changes);
    void push(const Command& command, quint64 to);
    void endSessions();
    // Between queries: a store on a database server that has gone and come back is connected
    // again, and what it holds differently from memory is announced.
    void keepStoreConnected();

    ObjectStore m_store;
    QHash<QByteArray, Session> m_sessions;
    QHash<QByteArray, const Peer*> m_sessionOwners;
    QString m_error;
    std::unique_ptr<EmbeddedPeer> m_embedded;
    // Every peer, the embedded console first, with the number of its joining: a query that waits
    // for its turn is dropped if its peer has gone, even if another took its place in memory.
    QList<Peer*> m_peers;
    QHash<const Peer*, quint64> m_joined;
    quint64 m_joins = 0;
    std::unique_ptr<DataService> m_data;
    std::unique_ptr<DeviceService> m_devices;
    std::unique_ptr<ExchangeCommands> m_commands;
};

}  // namespace vdserver
