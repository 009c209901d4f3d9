#pragma once

#include "accounts.h"
#include "command.h"
#include "exchangetransport.h"
#include "objectinfo.h"
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
class ExchangeCommands;
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
class Server : public QObject, public ExchangeTransport
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
    bool seed(const SeedOptions& options = {});
    // The users who can log in.
    QList<Account> accounts() const;
    // An administrator holding every right.
    QString defaultLogin() const;
    // A new session of a seeded user; nullopt for an unknown login.
    std::optional<Session> login(const QString& login);

    void send(const Command& query, std::function<void(Command&)> reply) override;
    // Where the commands that the server pushes go (the console passes VDServerInterface::deliver).
    void setPushTarget(std::function<void(Command&)> push);
    // Emits objectsChanged for every dataname (an empty list for an empty one), then
    // settingsChanged and schedulesChanged, synchronously: the console fills its store from it.
    void publish();
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
    // Templates of a worker.
    QVector<vorandel::TEMPLATE_DATA> templates(vorandel::TYPE_ID worker) const { return m_store.templates(worker); }
    QList<vorandel::EMAIL_MESSAGE> outbox() const;
    QList<vorandel::SYSLOG_DATA> syslogEntries() const;
    // The command types that the console's plug-ins last said they receive.
    COMMAND_LIST localCommandTypes() const;

signals:
    void objectsChanged(const QString& dataname, const QList<vorandel::ObjectInfo>& objects);
    void objectsRemoved(const QString& dataname, const QList<vorandel::TYPE_ID>& uids);
    void settingsChanged(const QHash<QString, QString>& settings);
    void schedulesChanged(const VDHash<int, vorandel::SCHEDULE_DATA>& schedules);
    // A reader waits for a card for this identity.
    void cardWanted(const QString& identity, unsigned int device);

private:
    std::array<Service*, 3> services() const;
    Reply handle(const Command& query);
    void announce(const ObjectChanges& changes);
    void push(Command command);

    ObjectStore m_store;
    QHash<QByteArray, Session> m_sessions;
    QString m_error;
    std::function<void(Command&)> m_pushTarget;
    std::unique_ptr<DataService> m_data;
    std::unique_ptr<DeviceService> m_devices;
    std::unique_ptr<ExchangeCommands> m_commands;
};

}  // namespace vdserver
