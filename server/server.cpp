#include "server.h"

#include "constants.h"
#include "database.h"
#include "dataservice.h"
#include "deviceservice.h"
#include "exchangecommands.h"
#include "passwordhash.h"
#include "peer.h"
#include "serverlogging.h"

#include <QPointer>
#include <QUuid>

#include <algorithm>

namespace vdserver {

using vorandel::ObjectInfo;
using vorandel::TYPE_ID;

// The console in the same process: trusted to act in the name of any session its server opened.
class EmbeddedPeer : public Peer
{
public:
    QString describe() const override { return QStringLiteral("the embedded console"); }
    bool isLoggedIn() const override { return true; }
    bool mayActAs(const Session&) const override { return true; }
    void push(const Command& command) override
    {
        if (!target) {
            qCDebug(lcServer) << "nobody to push" << command.name << "to";
            return;
        }
        Command delivered = command;
        target(delivered);
    }

    std::function<void(Command&)> target;
};

Server::Server(QObject* parent)
    : ObjectSource(parent),
      m_embedded(std::make_unique<EmbeddedPeer>()),
      m_data(std::make_unique<DataService>(m_store, m_sessions)),
      m_devices(std::make_unique<DeviceService>(m_store)),
      m_commands(std::make_unique<ExchangeCommands>(m_store, m_peers))
{
    addPeer(m_embedded.get());
    // For receivers that take the announcements through a queued connection.
    qRegisterMetaType<QList<TYPE_ID>>("QList<vorandel::TYPE_ID>");
    qRegisterMetaType<VDHash<int, vorandel::SCHEDULE_DATA>>("VDHash<int,vorandel::SCHEDULE_DATA>");
    for (Service* service : services())
        connect(service, &Service::commandReady, this, &Server::push);
    connect(m_devices.get(), &DeviceService::cardWanted, this, &Server::cardWanted);
}

Server::~Server() = default;

bool Server::open(const StoreLocation& location)
{
    if (!m_store.open(location)) {
        m_error = m_store.errorString();
        return false;
    }
    endSessions();
    m_error.clear();
    qCInfo(lcServer).noquote() << "opened" << storeName() << "with"
                               << m_store.objects(vorandel::PASS_REQUEST_DATANAME)->size() << "requests";
    return true;
}

QString Server::storeName() const
{
    return m_store.database().location().displayName();
}

bool Server::seed(const SeedOptions& options, SeedProgress progress)
{
    endSessions();
    const QHash<QString, QByteArray>& passwords = SeedData::demoPasswordHashes();
    m_store.begin();
    m_store.clear();
    const QList<Account> accounts = SeedData(m_store, options, std::move(progress)).populate();
    for (const Account& account : accounts) {
        m_store.setAccount(account.uid, account.roles);
        m_store.setPasswordHash(account.uid, passwords.value(account.login));
    }
    if (!m_store.commit()) {
        m_error = tr("Cannot keep the demo data set in %1: %2").arg(storeName(), m_store.errorString());
        qCCritical(lcServer).noquote() << m_error;
        return false;
    }
    qCInfo(lcServer) << "seeded" << m_store.objects(vorandel::PASS_REQUEST_DATANAME)->size() << "requests,"
                     << m_store.objects(vorandel::SUBJECT_DATANAME)->size() << "workers";
    return true;
}

QList<Account> Server::accounts() const
{
    QList<Account> accounts;
    const QMap<TYPE_ID, QStringList> rights = m_store.accounts();
    for (auto it = rights.cbegin(); it != rights.cend(); ++it) {
        const ObjectInfo* user = m_store.object(it.key(), vorandel::USER_DATANAME);
        if (!user)
            continue;
        QStringList name;
        for (const char* key : {"PT_SURNAME", "PT_NAME", "PT_PATRONYMIC"}) {
            const QString part = user->parameters.value(QLatin1String(key));
            if (!part.isEmpty())
                name << part;
        }
        accounts.append({user->uid, user->parameters.value(QStringLiteral("PT_LOGIN")), name.join(QLatin1Char(' ')),
                         it.value()});
    }
    return accounts;
}

std::optional<Account> Server::account(const QString& login) const
{
    const QList<Account> known = accounts();
    const auto found = std::find_if(known.cbegin(), known.cend(), [&](const Account& a) { return a.login == login; });
    if (found == known.cend())
        return std::nullopt;
    return *found;
}

QString Server::defaultLogin() const
{
    return SeedData::AdministratorLogin;
}

std::optional<Session> Server::login(const QString& login)
{
    const std::optional<Account> known = account(login);
    if (!known)
        return std::nullopt;
    return openSession(*known, *m_embedded);
}

Session Server::openSession(const Account& account, const Peer& peer, const QByteArray& resume)
{
    QByteArray id = resume;
    const auto held = m_sessions.constFind(id);
    if (id.size() != 16 || (held != m_sessions.cend() && held->userId != account.uid))
        id = QUuid::createUuid().toRfc4122();
    const Session session{account.uid, account.login, account.roles, id};
    m_sessions.insert(id, session);
    m_sessionOwners.insert(id, &peer);
    qCInfo(lcServer).noquote() << "login" << account.login << "at" << peer.describe();
    return session;
}

void Server::closeSession(const QByteArray& sessionId, const Peer& peer)
{
    if (m_sessionOwners.value(sessionId) != &peer)
        return;
    m_sessionOwners.remove(sessionId);
    m_sessions.remove(sessionId);
}

bool Server::setPassword(const QString& login, const QString& password)
{
    const std::optional<Account> known = account(login);
    if (!known) {
        m_error = tr("No user logs in as '%1'.").arg(login);
        return false;
    }
    const QByteArray hash = PasswordHash::make(password);
    if (hash.isEmpty()) {
        m_error = tr("Cannot hash the password.");
        return false;
    }
    m_store.begin();
    m_store.setPasswordHash(known->uid, hash);
    if (!m_store.commit()) {
        m_error = m_store.errorString();
        return false;
    }
    qCInfo(lcServer) << "password of" << login << "set";
    return true;
}

void Server::send(const Command& query, std::function<void(Command&)> reply)
{
    receive(m_embedded.get(), query, std::move(reply));
}

void Server::receive(Peer* peer, const Command& query, std::function<void(Command&)> reply)
{
    // Handled in a later turn of the event loop, as across a network: the sender never gets its
    // answer before send() returns.
    const quint64 joined = m_joined.value(peer);
    QMetaObject::invokeMethod(
        this,
        [this, peer, joined, query, reply = std::move(reply)] {
            if (joined == 0 || m_joined.value(peer) != joined) {
                qCDebug(lcServer) << "dropped" << query.name << "of a console that has gone";
                return;
            }
            run(*peer, query, reply);
        },
        Qt::QueuedConnection);
}

void Server::run(Peer& from, const Command& query, const std::function<void(Command&)>& reply)
{
    keepStoreConnected();
    m_store.begin();
    Reply result = handle(from, query);
    if (!result.ok())
        m_store.rollback();
    else if (!m_store.commit())
        result = Reply::failure(QStringLiteral("error_db: ") + m_store.errorString());
    const ObjectChanges changes = m_store.takeChanges();
    Command answer = query;
    answer.status = result.status;
    answer.data = result.data;
    // Whoever gets the answer may well shut the server down.
    const QPointer<Server> alive(this);
    if (reply)
        reply(answer);
    if (alive)
        announce(changes);
}

QByteArray Server::passwordHash(TYPE_ID user)
{
    keepStoreConnected();
    return m_store.passwordHash(user);
}

void Server::keepStoreConnected()
{
    if (!m_store.keepConnected())
        return;
    // Read afresh: whatever differs from what the consoles were told goes out to them.
    announce(m_store.takeChanges());
    emit settingsChanged(m_store.settings());
    emit schedulesChanged(m_store.schedules());
}

void Server::addPeer(Peer* peer)
{
    if (m_joined.contains(peer))
        return;
    m_peers.append(peer);
    m_joined.insert(peer, ++m_joins);
}

void Server::removePeer(Peer* peer)
{
    m_peers.removeAll(peer);
    m_joined.remove(peer);
    for (auto it = m_sessionOwners.begin(); it != m_sessionOwners.end();) {
        if (it.value() == peer) {
            m_sessions.remove(it.key());
            it = m_sessionOwners.erase(it);
        } else {
            ++it;
        }
    }
}

void Server::endSessions()
{
    m_sessions.clear();
    m_sessionOwners.clear();
}

void Server::setPushTarget(std::function<void(Command&)> push)
{
    m_embedded->target = std::move(push);
}

void Server::publish()
{
    for (const QString& dataname : ObjectStore::datanames())
        emit objectsChanged(dataname, m_store.objects(dataname)->values());
    emit settingsChanged(m_store.settings());
    emit schedulesChanged(m_store.schedules());
}

void Server::setAccessNoticeDelay(int msecs)
{
    m_data->setAccessNoticeDelay(msecs);
}

void Server::setResultDelay(int msecs)
{
    m_devices->setResultDelay(msecs);
    m_commands->setResultDelay(msecs);
}

bool Server::setDbSetting(const QString& key, const QString& value)
{
    m_store.begin();
    m_store.setSetting(key, value);
    if (!m_store.commit()) {
        m_error = m_store.errorString();
        return false;
    }
    emit settingsChanged(m_store.settings());
    return true;
}

void Server::setCardHolder(bool present)
{
    m_devices->setCardHolder(present);
}

void Server::presentCard(const QString& identity, unsigned int device, std::optional<vorandel::CARD_ID> number)
{
    m_devices->presentCard(identity, device, number);
}

const vorandel::OBJECT_HASH* Server::objects(const QString& dataname) const
{
    return m_store.objects(dataname);
}

QList<vorandel::EMAIL_MESSAGE> Server::outbox() const
{
    return m_commands->outbox();
}

QList<vorandel::SYSLOG_DATA> Server::syslogEntries() const
{
    return m_store.syslog();
}

COMMAND_LIST Server::localCommandTypes() const
{
    return m_embedded->receives();
}

std::array<Service*, 3> Server::services() const
{
    return {m_data.get(), m_devices.get(), m_commands.get()};
}

Reply Server::handle(Peer& from, const Command& query)
{
    if (!from.isLoggedIn())
        return Reply::failure(tr("Вход не выполнен"));
    for (Service* service : services()) {
        if (!service->handles(query.name))
            continue;
        const Reply reply = service->handle(query, from);
        if (!reply.ok()) {
            QString text;
            VDDataStream in(reply.data);
            in >> text;
            qCInfo(lcServer).noquote() << "refused" << query.name << "to"
                                       << (reply.actor.isEmpty() ? from.describe() : reply.actor) << "-" << text;
        }
        return reply;
    }
    qCWarning(lcServer).noquote() << "unknown command" << query.name << "from" << from.describe();
    return Reply::failure(tr("Неизвестная команда: %1").arg(query.name));
}

void Server::announce(const ObjectChanges& changes)
{
    if (changes.changed.isEmpty() && changes.removed.isEmpty())
        return;
    // The objects are read when the announcement goes out: a later query may have changed them
    // again, or removed them, in the meantime.
    QMetaObject::invokeMethod(
        this,
        [this, changes] {
            for (auto it = changes.changed.cbegin(); it != changes.changed.cend(); ++it) {
                QList<TYPE_ID> uids = it.value().values();
                std::sort(uids.begin(), uids.end());
                QList<ObjectInfo> objects;
                for (TYPE_ID uid : qAsConst(uids)) {
                    if (const ObjectInfo* object = m_store.object(uid, it.key()))
                        objects.append(*object);
                }
                if (!objects.isEmpty())
                    emit objectsChanged(it.key(), objects);
            }
            for (auto it = changes.removed.cbegin(); it != changes.removed.cend(); ++it) {
                QList<TYPE_ID> uids = it.value().values();
                std::sort(uids.begin(), uids.end());
                emit objectsRemoved(it.key(), uids);
            }
        },
        Qt::QueuedConnection);
}

void Server::push(const Command& command, quint64 to)
{
    bool taken = false;
    for (Peer* peer : qAsConst(m_peers)) {
        if (peer != m_embedded.get() && (to == 0 || peer->serial() == to) && peer->receives(command.name)) {
            peer->push(command);
            taken = true;
        }
    }
    qCDebug(lcServer) << "push" << command.name << (taken ? "to the network" : "to the embedded console");
    if (!taken && (to == 0 || to == m_embedded->serial()))
        m_embedded->push(command);
}

}  // namespace vdserver
