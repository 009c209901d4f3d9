#include "storerecords.h"

#include "database.h"
#include "serverlogging.h"

#include <QCborStreamReader>
#include <QCborStreamWriter>
#include <QDateTime>
#include <QFuture>
#include <QSqlError>
#include <QSqlQuery>
#include <QVarLengthArray>
#include <QVariant>
#include <QtConcurrent>

#include <utility>

namespace vdserver {

using vorandel::INHERIT_DATA;
using vorandel::ObjectInfo;
using vorandel::TYPE_ID;

namespace {
// Objects to a batch of decoding: enough to be worth a task, few enough to keep both cores busy.
constexpr int BatchSize = 1024;

QVariant uidValue(TYPE_ID uid)
{
    return QVariant(qlonglong(uid));
}

// Dates as ISO 8601 text with milliseconds and the offset they were given with; none is NULL.
QVariant dateValue(const QDateTime& date)
{
    return date.isNull() ? QVariant(QVariant::String) : QVariant(date.toString(Qt::ISODateWithMs));
}

QDateTime dateOf(const QVariant& value)
{
    return value.isNull() ? QDateTime() : QDateTime::fromString(value.toString(), Qt::ISODateWithMs);
}

// A text that a NOT NULL column takes, empty included.
QVariant textValue(const QString& text)
{
    return QVariant(text.isNull() ? QStringLiteral("") : text);
}

// A text string of CBOR as UTF-8 into `buffer`; false for anything else. Reading it whole into a
// buffer that is reused spares an allocation per string: a store has millions of them.
bool readUtf8(QCborStreamReader& reader, QVarLengthArray<char, 256>& buffer)
{
    if (!reader.isString())
        return false;
    buffer.clear();
    for (;;) {
        const qsizetype size = reader.currentStringChunkSize();
        if (size < 0)
            return false;
        const qsizetype at = buffer.size();
        buffer.resize(at + size);
        const auto chunk = reader.readStringChunk(buffer.data() + at, size);
        if (chunk.status == QCborStreamReader::EndOfString) {
            buffer.resize(at);
            return true;
        }
        if (chunk.status != QCborStreamReader::Ok)
            return false;
        buffer.resize(at + chunk.data);
    }
}

void warn(const QSqlQuery& query, const char* what)
{
    qCWarning(lcServer).noquote() << "fail to read" << what << Database::errorText(query.lastError());
}
}  // namespace

StoreRecords::StoreRecords(Database& database) : m_database(database)
{
}

bool StoreRecords::loadObjects(QString* error, const std::function<void(ObjectInfo&&)>& take) const
{
    // Decoding the parameters is most of the work: batches of them are decoded on the pool's
    // threads while this one goes on reading rows, and then the links.
    QSqlQuery objectRows(m_database.connection());
    objectRows.setForwardOnly(true);
    if (!objectRows.exec(QStringLiteral("SELECT uid, type, parent_id, modified, parameters FROM objects"))) {
        *error = Database::errorText(objectRows.lastError());
        return false;
    }
    QVector<QFuture<QVector<ObjectInfo>>> batches;
    QHash<QString, QString> types;
    Batch batch;
    while (objectRows.next()) {
        ObjectInfo object;
        object.uid = TYPE_ID(objectRows.value(0).toLongLong());
        const QString type = objectRows.value(1).toString();
        const auto known = types.constFind(type);
        object.type = known != types.cend() ? *known : *types.insert(type, type);
        object.parent = TYPE_ID(objectRows.value(2).toLongLong());
        object.modified = dateOf(objectRows.value(3));
        batch.objects.append(std::move(object));
        batch.parameters.append(objectRows.value(4).toByteArray());
        if (batch.objects.size() == BatchSize)
            batches.append(QtConcurrent::run(&StoreRecords::decodeBatch, std::exchange(batch, {})));
    }
    if (!batch.objects.isEmpty())
        batches.append(QtConcurrent::run(&StoreRecords::decodeBatch, std::move(batch)));

    // Links grouped by their owner. QMultiMap puts a new value before those of its key, so
    // inserting each object's links from the last to the first gives back the order they had.
    QHash<TYPE_ID, vorandel::INHERIT_MAP> links;
    QSqlQuery linkRows(m_database.connection());
    linkRows.setForwardOnly(true);
    if (!linkRows.exec(QStringLiteral("SELECT parent_id, child_id, ref_type, priority, date_from, date_to "
                                      "FROM object_inherit ORDER BY parent_id, position DESC"))) {
        *error = Database::errorText(linkRows.lastError());
        for (QFuture<QVector<ObjectInfo>>& decoding : batches)
            decoding.waitForFinished();
        return false;
    }
    TYPE_ID owner = 0;
    vorandel::INHERIT_MAP* held = nullptr;
    while (linkRows.next()) {
        const TYPE_ID parent = TYPE_ID(linkRows.value(0).toLongLong());
        if (!held || parent != owner) {
            owner = parent;
            held = &links[parent];
        }
        const unsigned int type = linkRows.value(2).toUInt();
        held->insert(type, INHERIT_DATA(parent, TYPE_ID(linkRows.value(1).toLongLong()), type,
                                        linkRows.value(3).toUInt(), dateOf(linkRows.value(4)),
                                        dateOf(linkRows.value(5))));
    }

    for (QFuture<QVector<ObjectInfo>>& decoding : batches) {
        QVector<ObjectInfo> objects = decoding.result();
        for (ObjectInfo& object : objects) {
            object.inherits = links.take(object.uid);
            take(std::move(object));
        }
    }
    return true;
}

QVector<ObjectInfo> StoreRecords::decodeBatch(Batch batch)
{
    // Dates, names, states and keys repeat from one object to the next: the objects of a batch
    // share one copy of each. A table for all of them would cost more to look up than it saves.
    QHash<QByteArray, QString> texts;
    for (int i = 0; i < batch.objects.size(); ++i) {
        if (!decodeParameters(batch.parameters.at(i), batch.objects[i].parameters, texts))
            qCWarning(lcServer) << "fail to read the parameters of" << batch.objects.at(i).uid;
    }
    return batch.objects;
}

bool StoreRecords::writeObject(const ObjectInfo& object, const ObjectInfo* previous)
{
    const bool rowChanged = !previous || previous->type != object.type || previous->parent != object.parent
        || previous->modified != object.modified || previous->parameters != object.parameters;
    if (rowChanged) {
        QSqlQuery& upsert = m_database.statement(QStringLiteral(
            "INSERT INTO objects (uid, type, parent_id, modified, parameters) VALUES (?, ?, ?, ?, ?) "
            "ON CONFLICT (uid) DO UPDATE SET type = excluded.type, parent_id = excluded.parent_id, "
            "modified = excluded.modified, parameters = excluded.parameters"));
        if (!m_database.run(upsert, {uidValue(object.uid), textValue(object.type), uidValue(object.parent),
                                     dateValue(object.modified), encodeParameters(object.parameters)}))
            return false;
    }
    if (previous && previous->inherits == object.inherits)
        return true;
    if (previous && !previous->inherits.isEmpty()) {
        QSqlQuery& drop = m_database.statement(QStringLiteral("DELETE FROM object_inherit WHERE parent_id = ?"));
        if (!m_database.run(drop, {uidValue(object.uid)}))
            return false;
    }
    QSqlQuery& insert = m_database.statement(
        QStringLiteral("INSERT INTO object_inherit (parent_id, position, child_id, ref_type, priority, date_from, "
                       "date_to) VALUES (?, ?, ?, ?, ?, ?, ?)"));
    int position = 0;
    for (const INHERIT_DATA& link : object.inherits) {
        if (!m_database.run(insert, {uidValue(object.uid), position++, uidValue(link.second), link.type,
                                     link.priority, dateValue(link.dateFrom), dateValue(link.dateTo)}))
            return false;
    }
    return true;
}

bool StoreRecords::removeObject(TYPE_ID uid)
{
    QSqlQuery& remove = m_database.statement(QStringLiteral("DELETE FROM objects WHERE uid = ?"));
    return m_database.run(remove, {uidValue(uid)});
}

bool StoreRecords::clear()
{
    for (const char* table : {"objects", "settings", "schedules", "syslog"}) {
        if (!m_database.run(QStringLiteral("DELETE FROM %1").arg(QLatin1String(table))))
            return false;
    }
    return true;
}

TYPE_ID StoreRecords::lastUid() const
{
    // Whichever is higher: a counter that fell behind its objects must not hand out their uids.
    qlonglong last = 0;
    forEachRow(QStringLiteral("SELECT (SELECT last_uid FROM uid_counter WHERE id = 1), (SELECT MAX(uid) FROM objects)"),
               [&](const QSqlQuery& row) { last = qMax(row.value(0).toLongLong(), row.value(1).toLongLong()); });
    return TYPE_ID(last);
}

bool StoreRecords::setLastUid(TYPE_ID uid)
{
    QSqlQuery& update = m_database.statement(QStringLiteral("UPDATE uid_counter SET last_uid = ? WHERE id = 1"));
    return m_database.run(update, {uidValue(uid)});
}

QByteArray StoreRecords::blob(TYPE_ID uid, const QString& name) const
{
    QSqlQuery& select = m_database.statement(QStringLiteral("SELECT data FROM blobs WHERE object_id = ? AND name = ?"));
    if (!m_database.run(select, {uidValue(uid), name})) {
        warn(select, "a blob");
        return {};
    }
    const QByteArray bytes = select.next() ? select.value(0).toByteArray() : QByteArray();
    select.finish();
    return bytes;
}

bool StoreRecords::setBlob(TYPE_ID uid, const QString& name, const QByteArray& bytes)
{
    if (bytes.isEmpty()) {
        QSqlQuery& remove = m_database.statement(QStringLiteral("DELETE FROM blobs WHERE object_id = ? AND name = ?"));
        return m_database.run(remove, {uidValue(uid), name});
    }
    QSqlQuery& upsert = m_database.statement(
        QStringLiteral("INSERT INTO blobs (object_id, name, data) VALUES (?, ?, ?) "
                       "ON CONFLICT (object_id, name) DO UPDATE SET data = excluded.data"));
    return m_database.run(upsert, {uidValue(uid), name, bytes});
}

bool StoreRecords::hasDrawnPortrait(TYPE_ID worker) const
{
    QSqlQuery& select = m_database.statement(QStringLiteral("SELECT 1 FROM drawn_portraits WHERE worker_id = ?"));
    if (!m_database.run(select, {uidValue(worker)})) {
        warn(select, "a portrait");
        return false;
    }
    const bool found = select.next();
    select.finish();
    return found;
}

bool StoreRecords::setDrawnPortrait(TYPE_ID worker, bool drawn)
{
    QSqlQuery& change = m_database.statement(
        drawn ? QStringLiteral("INSERT INTO drawn_portraits (worker_id) VALUES (?) ON CONFLICT DO NOTHING")
              : QStringLiteral("DELETE FROM drawn_portraits WHERE worker_id = ?"));
    return m_database.run(change, {uidValue(worker)});
}

QVector<vorandel::TEMPLATE_DATA> StoreRecords::templates(TYPE_ID worker) const
{
    QSqlQuery& select = m_database.statement(
        QStringLiteral("SELECT id, quality, device, kind, data, extra, finger_index FROM fingers "
                       "WHERE user_object_id = ? ORDER BY position"));
    QVector<vorandel::TEMPLATE_DATA> templates;
    if (!m_database.run(select, {uidValue(worker)})) {
        warn(select, "templates");
        return templates;
    }
    while (select.next()) {
        vorandel::TEMPLATE_DATA data;
        data.id = select.value(0).toInt();
        data.quality = select.value(1).toInt();
        data.device = select.value(2).toInt();
        data.kind = select.value(3).toInt();
        data.data = select.value(4).toByteArray();
        data.extra = select.value(5).toByteArray();
        data.index = qint16(select.value(6).toInt());
        templates.append(data);
    }
    return templates;
}

bool StoreRecords::setTemplates(TYPE_ID worker, const QVector<vorandel::TEMPLATE_DATA>& templates)
{
    QSqlQuery& drop = m_database.statement(QStringLiteral("DELETE FROM fingers WHERE user_object_id = ?"));
    if (!m_database.run(drop, {uidValue(worker)}))
        return false;
    QSqlQuery& insert = m_database.statement(
        QStringLiteral("INSERT INTO fingers (id, user_object_id, position, finger_index, kind, quality, device, data, "
                       "extra) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    for (int position = 0; position < templates.size(); ++position) {
        const vorandel::TEMPLATE_DATA& data = templates.at(position);
        if (!m_database.run(insert, {data.id, uidValue(worker), position, int(data.index), data.kind, data.quality,
                                     data.device, data.data, data.extra}))
            return false;
    }
    return true;
}

QHash<QString, QString> StoreRecords::settings() const
{
    QHash<QString, QString> settings;
    forEachRow(QStringLiteral("SELECT name, value FROM settings"), [&](const QSqlQuery& row) {
        settings.insert(row.value(0).toString(), row.value(1).toString());
    });
    return settings;
}

bool StoreRecords::setSetting(const QString& key, const QString& value)
{
    QSqlQuery& upsert = m_database.statement(QStringLiteral(
        "INSERT INTO settings (name, value) VALUES (?, ?) ON CONFLICT (name) DO UPDATE SET value = excluded.value"));
    return m_database.run(upsert, {key, textValue(value)});
}

VDHash<int, vorandel::SCHEDULE_DATA> StoreRecords::schedules() const
{
    VDHash<int, vorandel::SCHEDULE_DATA> schedules;
    forEachRow(QStringLiteral("SELECT id, name, intervals FROM schedules"), [&](const QSqlQuery& row) {
        const int id = row.value(0).toInt();
        schedules.insert(id, {id, row.value(1).toString(), row.value(2).toString()});
    });
    return schedules;
}

bool StoreRecords::setSchedules(const VDHash<int, vorandel::SCHEDULE_DATA>& schedules)
{
    if (!m_database.run(QStringLiteral("DELETE FROM schedules")))
        return false;
    QSqlQuery& insert = m_database.statement(QStringLiteral("INSERT INTO schedules (id, name, intervals) VALUES (?, ?, ?)"));
    for (auto it = schedules.cbegin(); it != schedules.cend(); ++it) {
        if (!m_database.run(insert, {it.key(), textValue(it->name), textValue(it->intervals)}))
            return false;
    }
    return true;
}

QMap<TYPE_ID, QStringList> StoreRecords::accounts() const
{
    QMap<TYPE_ID, QStringList> accounts;
    forEachRow(QStringLiteral("SELECT user_id, roles FROM accounts"), [&](const QSqlQuery& row) {
        accounts.insert(TYPE_ID(row.value(0).toLongLong()),
                        row.value(1).toString().split(QLatin1Char(';'), Qt::SkipEmptyParts));
    });
    return accounts;
}

bool StoreRecords::setAccount(TYPE_ID user, const QStringList& roles)
{
    QSqlQuery& upsert = m_database.statement(QStringLiteral(
        "INSERT INTO accounts (user_id, roles) VALUES (?, ?) ON CONFLICT (user_id) DO UPDATE SET roles = excluded.roles"));
    return m_database.run(upsert, {uidValue(user), textValue(roles.join(QLatin1Char(';')))});
}

QByteArray StoreRecords::passwordHash(TYPE_ID user) const
{
    QSqlQuery& select = m_database.statement(QStringLiteral("SELECT password_hash FROM accounts WHERE user_id = ?"));
    if (!m_database.run(select, {uidValue(user)})) {
        warn(select, "a password");
        return {};
    }
    const QByteArray hash = select.next() ? select.value(0).toString().toLatin1() : QByteArray();
    select.finish();
    return hash;
}

bool StoreRecords::setPasswordHash(TYPE_ID user, const QByteArray& hash)
{
    QSqlQuery& update = m_database.statement(QStringLiteral("UPDATE accounts SET password_hash = ? WHERE user_id = ?"));
    const QVariant value = hash.isEmpty() ? QVariant(QVariant::String) : QVariant(QString::fromLatin1(hash));
    return m_database.run(update, {value, uidValue(user)});
}

QList<vorandel::SYSLOG_DATA> StoreRecords::syslog() const
{
    QList<vorandel::SYSLOG_DATA> entries;
    forEachRow(QStringLiteral("SELECT code, user_id, message, logged_at FROM syslog ORDER BY id"),
               [&](const QSqlQuery& row) {
                   entries.append({row.value(0).toUInt(), row.value(1).toString(), row.value(2).toString(),
                                   dateOf(row.value(3))});
               });
    return entries;
}

bool StoreRecords::addSyslog(const vorandel::SYSLOG_DATA& entry)
{
    QSqlQuery& insert = m_database.statement(
        QStringLiteral("INSERT INTO syslog (code, user_id, message, logged_at) VALUES (?, ?, ?, ?)"));
    return m_database.run(insert, {qlonglong(entry.code), textValue(entry.user), textValue(entry.text),
                                   dateValue(entry.time)});
}

void StoreRecords::forEachRow(const QString& sql, const std::function<void(const QSqlQuery&)>& take) const
{
    QSqlQuery query(m_database.connection());
    query.setForwardOnly(true);
    if (!query.exec(sql))
        qCWarning(lcServer).noquote() << "fail to read" << sql << Database::errorText(query.lastError());
    while (query.next())
        take(query);
}

QByteArray StoreRecords::encodeParameters(const QHash<QString, QString>& parameters)
{
    QByteArray bytes;
    QCborStreamWriter writer(&bytes);
    writer.startMap(quint64(parameters.size()));
    for (auto it = parameters.cbegin(); it != parameters.cend(); ++it) {
        writer.append(it.key());
        writer.append(it.value());
    }
    writer.endMap();
    return bytes;
}

bool StoreRecords::decodeParameters(const QByteArray& bytes, QHash<QString, QString>& parameters,
                                    QHash<QByteArray, QString>& texts)
{
    QCborStreamReader reader(bytes);
    if (!reader.isMap())
        return false;
    if (reader.isLengthKnown())
        parameters.reserve(int(reader.length()));
    reader.enterContainer();
    QVarLengthArray<char, 256> buffer;
    const auto shared = [&]() -> const QString& {
        const QByteArray utf8 = QByteArray::fromRawData(buffer.constData(), int(buffer.size()));
        auto text = texts.constFind(utf8);
        if (text == texts.cend())
            text = texts.insert(QByteArray(utf8.constData(), utf8.size()), QString::fromUtf8(utf8));
        return *text;
    };
    while (reader.hasNext()) {
        if (!readUtf8(reader, buffer))
            return false;
        const QString& key = shared();
        if (!readUtf8(reader, buffer))
            return false;
        parameters.insert(key, shared());
    }
    return reader.lastError() == QCborError::NoError && reader.leaveContainer();
}

}  // namespace vdserver
