#include "objectstore.h"

#include "constants.h"
#include "database.h"
#include "photos.h"
#include "serverlogging.h"
#include "storerecords.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace vdserver {

using vorandel::ObjectInfo;
using vorandel::TYPE_ID;

namespace {
// A connection that has been quiet for this long is asked whether it still answers before the
// next transaction, so that a database server restarted meanwhile costs no operator his change.
constexpr int ProbeAfterIdleMs = 1000;
// Each try to reach a lost database may wait for its connect timeout.
constexpr int ReconnectEveryMs = 2000;

std::map<QString, vorandel::OBJECT_HASH> emptyTables()
{
    std::map<QString, vorandel::OBJECT_HASH> tables;
    for (const QString& dataname : ObjectStore::datanames())
        tables[dataname];
    return tables;
}
}  // namespace

ObjectStore::ObjectStore()
    : m_database(std::make_unique<Database>()),
      m_records(std::make_unique<StoreRecords>(*m_database)),
      m_tables(emptyTables())
{
    if (!m_database->open(StoreLocation()))
        qCCritical(lcServer).noquote() << "no store in memory:" << m_database->errorString();
}

ObjectStore::~ObjectStore()
{
    if (m_inTransaction)
        rollback();
}

bool ObjectStore::open(const StoreLocation& location)
{
    Q_ASSERT(!m_inTransaction);
    // A store admits one server at a time: to read it afresh, this one lets go of it first.
    if (location == m_database->location() && !location.inMemory())
        m_database->close();
    auto database = std::make_unique<Database>();
    if (!database->open(location)) {
        m_error = database->errorString();
        return false;
    }
    auto records = std::make_unique<StoreRecords>(*database);
    std::map<QString, vorandel::OBJECT_HASH> tables = emptyTables();
    QSet<QString> unknownTypes;
    QString failure;
    const bool read = records->loadObjects(&failure, [&](ObjectInfo&& object) {
        const QString dataname = datanameForType(object.type);
        if (dataname.isEmpty())
            unknownTypes.insert(object.type);
        else
            tables[dataname].insert(object.uid, std::move(object));
    });
    if (!read) {
        m_error = tr("Cannot read the objects of the store %1: %2").arg(location.displayName(), failure);
        return false;
    }
    for (const QString& type : qAsConst(unknownTypes))
        qCWarning(lcServer) << "the store holds objects of the type" << type << "that this server does not keep";

    // Table by table, so that the pointers that objects() handed out stay valid.
    for (auto& [dataname, objects] : tables)
        m_tables[dataname] = std::move(objects);
    m_settings = records->settings();
    m_schedules = records->schedules();
    m_accounts = records->accounts();
    m_lastUid = m_savedUid = records->lastUid();
    m_changes = {};
    m_portraits.clear();
    // Made by this open, or left empty by one that was cut short before anything was kept.
    m_isNew = std::all_of(m_tables.cbegin(), m_tables.cend(), [](const auto& table) { return table.second.isEmpty(); });
    m_error.clear();
    // The records refer to the database: they go first.
    m_records = std::move(records);
    m_database = std::move(database);
    m_suspect = m_commitUncertain = false;
    m_lastContact.start();
    return true;
}

void ObjectStore::begin()
{
    Q_ASSERT(!m_inTransaction);
    m_inTransaction = true;
    m_failure.clear();
    m_changesAtBegin = m_changes;
}

bool ObjectStore::commit()
{
    Q_ASSERT(m_inTransaction);
    const bool countUids = m_lastUid > m_savedUid;
    if (countUids && writing())
        written(m_records->setLastUid(m_lastUid));
    if (m_failure.isEmpty() && m_database->commit()) {
        if (countUids)
            m_savedUid = m_lastUid;
        m_undo.clear();
        m_inTransaction = false;
        m_lastContact.start();
        return true;
    }
    // A statement that failed was undone by the database; a commit that failed may have been
    // kept if the connection went with it.
    m_suspect = true;
    if (m_failure.isEmpty())
        m_commitUncertain = true;
    const QString failure = m_failure.isEmpty() ? m_database->errorString() : m_failure;
    qCWarning(lcServer).noquote() << "fail to keep the changes in" << m_database->location().displayName() << failure;
    rollback();
    m_error = failure;
    return false;
}

void ObjectStore::rollback()
{
    Q_ASSERT(m_inTransaction);
    m_database->rollback();
    for (auto undo = m_undo.rbegin(); undo != m_undo.rend(); ++undo)
        (*undo)();
    m_undo.clear();
    m_changes = std::exchange(m_changesAtBegin, {});
    m_failure.clear();
    m_inTransaction = false;
}

bool ObjectStore::keepConnected()
{
    Q_ASSERT(!m_inTransaction);
    if (m_database->engine() != StoreLocation::Engine::PostgreSQL)
        return false;
    if (!m_suspect && !m_lastContact.hasExpired(ProbeAfterIdleMs))
        return false;
    if (m_database->isAlive()) {
        // Whatever failed, the database said so, and undid it.
        m_suspect = m_commitUncertain = false;
        m_lastContact.start();
        return false;
    }
    m_suspect = true;
    if (m_lastReconnect.isValid() && !m_lastReconnect.hasExpired(ReconnectEveryMs))
        return false;
    m_lastReconnect.start();
    const StoreLocation location = m_database->location();
    qCWarning(lcServer).noquote() << "lost the connection to the store" << location.displayName()
                                  << "- connecting again";
    if (!m_commitUncertain) {
        if (!m_database->reopen()) {
            qCWarning(lcServer).noquote() << "fail to reach the store:" << m_database->errorString();
            return false;
        }
        m_suspect = false;
        m_lastContact.start();
        qCInfo(lcServer).noquote() << "connected to the store" << location.displayName() << "again";
        return false;
    }

    const std::map<QString, vorandel::OBJECT_HASH> before = m_tables;  // shared, not copied
    const ObjectChanges noted = m_changes;
    const TYPE_ID handedOut = m_lastUid;
    if (!open(location)) {
        qCWarning(lcServer).noquote() << "fail to reach the store:" << m_error;
        return false;
    }
    m_changes = noted;
    // A uid handed out for a commit that was not kept is not given again all the same.
    m_lastUid = std::max(m_lastUid, handedOut);
    for (const auto& [dataname, now] : m_tables) {
        const vorandel::OBJECT_HASH& then = before.at(dataname);
        for (auto it = now.cbegin(); it != now.cend(); ++it) {
            const auto held = then.constFind(it.key());
            if (held == then.cend() || !(*held == *it))
                m_changes.changed[dataname].insert(it.key());
        }
        for (auto it = then.cbegin(); it != then.cend(); ++it) {
            if (!now.contains(it.key()))
                m_changes.removed[dataname].insert(it.key());
        }
    }
    qCInfo(lcServer).noquote() << "connected to the store" << location.displayName()
                               << "again and read it afresh, as the last commit may have been kept";
    return true;
}

QStringList ObjectStore::datanames()
{
    return {vorandel::ORGSTRUCTURE_DATANAME, vorandel::POLICY_DATANAME,  vorandel::USER_DATANAME,
            vorandel::CONFIRM_LIST_DATANAME, vorandel::JOB_DATANAME,     vorandel::DEVICE_DATANAME,
            vorandel::SUBJECT_DATANAME,      vorandel::CARD_DATANAME,    vorandel::PASS_REQUEST_DATANAME};
}

QString ObjectStore::datanameForType(const QString& type)
{
    static const QHash<QString, QString> datanames = {
        {db::misc::PASS_REQUEST, vorandel::PASS_REQUEST_DATANAME},
        {db::orgstructure::WORKER, vorandel::SUBJECT_DATANAME},
        {db::user::USER, vorandel::USER_DATANAME},
        {db::access::POLICY, vorandel::POLICY_DATANAME},
        {db::orgstructure::SUBJECT_ROOT, vorandel::ORGSTRUCTURE_DATANAME},
        {db::orgstructure::FIRM, vorandel::ORGSTRUCTURE_DATANAME},
        {db::orgstructure::DEPARTMENT, vorandel::ORGSTRUCTURE_DATANAME},
        {db::misc::CARD, vorandel::CARD_DATANAME},
        {DEVICE_TYPE, vorandel::DEVICE_DATANAME},
        {JOB_TYPE, vorandel::JOB_DATANAME},
        {CONFIRM_LIST_TYPE, vorandel::CONFIRM_LIST_DATANAME},
    };
    return datanames.value(type);
}

const vorandel::OBJECT_HASH* ObjectStore::objects(const QString& dataname) const
{
    const auto it = m_tables.find(dataname);
    return it == m_tables.end() ? nullptr : &it->second;
}

const ObjectInfo* ObjectStore::object(TYPE_ID uid) const
{
    for (const auto& [dataname, objects] : m_tables) {
        const auto it = objects.constFind(uid);
        if (it != objects.cend())
            return &it.value();
    }
    return nullptr;
}

const ObjectInfo* ObjectStore::object(TYPE_ID uid, const QString& dataname) const
{
    const vorandel::OBJECT_HASH* table = objects(dataname);
    if (!table)
        return nullptr;
    const auto it = table->constFind(uid);
    return it == table->cend() ? nullptr : &it.value();
}

TYPE_ID ObjectStore::cardByNumber(vorandel::CARD_ID number) const
{
    if (number == 0)
        return 0;
    for (const ObjectInfo& card : *objects(vorandel::CARD_DATANAME)) {
        if (ot_card::number(card) == number)
            return card.uid;
    }
    return 0;
}

void ObjectStore::put(const ObjectInfo& given)
{
    const QString dataname = datanameForType(given.type);
    vorandel::OBJECT_HASH* objects = table(dataname);
    if (!objects || given.uid == 0) {
        qCWarning(lcServer) << "no place for" << given;
        return;
    }
    ObjectInfo object = given;
    object.inheritedBy.clear();
    const auto foreign = [&](const vorandel::INHERIT_DATA& link) { return link.first != object.uid; };
    if (std::any_of(object.inherits.cbegin(), object.inherits.cend(), foreign)) {
        for (vorandel::INHERIT_DATA& link : object.inherits)
            link.first = object.uid;
    }

    const auto stored = objects->constFind(object.uid);
    std::optional<ObjectInfo> previous;
    if (stored != objects->cend())
        previous = *stored;
    if (writing())
        written(m_records->writeObject(object, previous ? &*previous : nullptr));
    objects->insert(object.uid, object);
    m_changes.changed[dataname].insert(object.uid);
    remember([this, dataname, uid = object.uid, previous] {
        if (previous)
            m_tables[dataname].insert(uid, *previous);
        else
            m_tables[dataname].remove(uid);
    });
}

void ObjectStore::remove(TYPE_ID uid)
{
    for (auto& [dataname, objects] : m_tables) {
        const auto stored = objects.constFind(uid);
        if (stored == objects.cend())
            continue;
        const ObjectInfo previous = *stored;
        objects.remove(uid);
        auto changed = m_changes.changed.find(dataname);
        if (changed != m_changes.changed.end())
            changed->remove(uid);
        m_changes.removed[dataname].insert(uid);
        remember([this, dataname = dataname, previous] { m_tables[dataname].insert(previous.uid, previous); });
        break;
    }
    if (m_accounts.contains(uid)) {
        const QStringList roles = m_accounts.take(uid);
        remember([this, uid, roles] { m_accounts.insert(uid, roles); });
    }
    m_portraits.remove(uid);
    if (writing())
        written(m_records->removeObject(uid));
}

ObjectChanges ObjectStore::takeChanges()
{
    return std::exchange(m_changes, {});
}

QByteArray ObjectStore::blob(TYPE_ID uid, const QString& name)
{
    const QByteArray stored = m_records->blob(uid, name);
    if (!stored.isEmpty() || name != PHOTO_KEY)
        return stored;
    const auto drawn = m_portraits.constFind(uid);
    if (drawn != m_portraits.cend())
        return *drawn;
    const ObjectInfo* worker = object(uid, vorandel::SUBJECT_DATANAME);
    if (!worker || !m_records->hasDrawnPortrait(uid))
        return {};
    // The same worker always gets the same picture: it is drawn again rather than kept.
    return *m_portraits.insert(uid, Photos::photo(*worker));
}

void ObjectStore::setBlob(TYPE_ID uid, const QString& name, const QByteArray& bytes)
{
    if (name == PHOTO_KEY)
        m_portraits.remove(uid);
    if (!writing())
        return;
    written(m_records->setBlob(uid, name, bytes));
    if (name == PHOTO_KEY)
        written(m_records->setDrawnPortrait(uid, false));
}

void ObjectStore::promisePortrait(TYPE_ID worker)
{
    if (writing())
        written(m_records->setDrawnPortrait(worker, true));
}

QVector<vorandel::TEMPLATE_DATA> ObjectStore::templates(TYPE_ID worker) const
{
    return m_records->templates(worker);
}

void ObjectStore::setTemplates(TYPE_ID worker, const QVector<vorandel::TEMPLATE_DATA>& templates)
{
    if (writing())
        written(m_records->setTemplates(worker, templates));
}

void ObjectStore::setSetting(const QString& key, const QString& value)
{
    if (writing())
        written(m_records->setSetting(key, value));
    const auto previous = m_settings.constFind(key);
    remember([this, key, previous = previous != m_settings.cend() ? std::optional<QString>(*previous) : std::nullopt] {
        if (previous)
            m_settings.insert(key, *previous);
        else
            m_settings.remove(key);
    });
    m_settings.insert(key, value);
}

void ObjectStore::setSchedules(const VDHash<int, vorandel::SCHEDULE_DATA>& schedules)
{
    if (writing())
        written(m_records->setSchedules(schedules));
    remember([this, previous = m_schedules] { m_schedules = previous; });
    m_schedules = schedules;
}

void ObjectStore::setAccount(TYPE_ID user, const QStringList& roles)
{
    if (writing())
        written(m_records->setAccount(user, roles));
    remember([this, previous = m_accounts] { m_accounts = previous; });
    m_accounts.insert(user, roles);
}

QByteArray ObjectStore::passwordHash(TYPE_ID user) const
{
    return m_records->passwordHash(user);
}

void ObjectStore::setPasswordHash(TYPE_ID user, const QByteArray& hash)
{
    if (writing())
        written(m_records->setPasswordHash(user, hash));
}

QList<vorandel::SYSLOG_DATA> ObjectStore::syslog() const
{
    return m_records->syslog();
}

void ObjectStore::addSyslog(const vorandel::SYSLOG_DATA& entry)
{
    if (writing())
        written(m_records->addSyslog(entry));
}

void ObjectStore::clear()
{
    if (writing())
        written(m_records->clear());
    // Emptied in place: the tables stay where readers have them.
    std::map<QString, vorandel::OBJECT_HASH> tables;
    for (auto& [dataname, objects] : m_tables)
        tables[dataname] = std::exchange(objects, {});
    const QHash<QString, QString> settings = std::exchange(m_settings, {});
    const VDHash<int, vorandel::SCHEDULE_DATA> schedules = std::exchange(m_schedules, {});
    const QMap<TYPE_ID, QStringList> accounts = std::exchange(m_accounts, {});
    remember([this, tables, settings, schedules, accounts] {
        for (const auto& [dataname, objects] : tables)
            m_tables[dataname] = objects;
        m_settings = settings;
        m_schedules = schedules;
        m_accounts = accounts;
    });
    m_changes = {};
    m_portraits.clear();
}

vorandel::OBJECT_HASH* ObjectStore::table(const QString& dataname)
{
    const auto it = m_tables.find(dataname);
    return it == m_tables.end() ? nullptr : &it->second;
}

bool ObjectStore::writing()
{
    if (!m_failure.isEmpty())
        return false;
    if (!m_inTransaction) {
        qCWarning(lcServer) << "a change outside a transaction is kept at once";
        return true;
    }
    if (m_database->begin())
        return true;
    m_failure = m_database->errorString();
    return false;
}

void ObjectStore::written(bool ok)
{
    if (!ok && m_failure.isEmpty())
        m_failure = m_database->errorString();
}

void ObjectStore::remember(std::function<void()> undo)
{
    if (m_inTransaction)
        m_undo.push_back(std::move(undo));
}

}  // namespace vdserver
