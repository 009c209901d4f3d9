#pragma once

#include "objectinfo.h"
#include "servicerecords.h"
#include "vdhash.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

class QSqlQuery;

namespace vdserver {

class Database;

// The server's records as rows of the store's tables (schema/*.sql). Writes run in whatever
// transaction the database has open and report failure by returning false, with the reason in the
// database's errorString(); reads of a broken store give what they could read and log the rest.
class StoreRecords
{
public:
    explicit StoreRecords(Database& database);

    // Every object with its links, handed over one by one. False, with `error` saying why, if the
    // tables could not be read.
    bool loadObjects(QString* error, const std::function<void(vorandel::ObjectInfo&&)>& take) const;
    // Writes an object; `previous` is what the store held before, null for a new one, so that
    // only what changed is written.
    bool writeObject(const vorandel::ObjectInfo& object, const vorandel::ObjectInfo* previous);
    // Removes an object with everything that belongs to it.
    bool removeObject(vorandel::TYPE_ID uid);
    // Removes every object and setting; the uid counter stays.
    bool clear();

    vorandel::TYPE_ID lastUid() const;
    bool setLastUid(vorandel::TYPE_ID uid);

    QByteArray blob(vorandel::TYPE_ID uid, const QString& name) const;
    bool setBlob(vorandel::TYPE_ID uid, const QString& name, const QByteArray& bytes);
    bool hasDrawnPortrait(vorandel::TYPE_ID worker) const;
    bool setDrawnPortrait(vorandel::TYPE_ID worker, bool drawn);

    QVector<vorandel::TEMPLATE_DATA> templates(vorandel::TYPE_ID worker) const;
    bool setTemplates(vorandel::TYPE_ID worker, const QVector<vorandel::TEMPLATE_DATA>& templates);

    QHash<QString, QString> settings() const;
    bool setSetting(const QString& key, const QString& value);
    VDHash<int, vorandel::SCHEDULE_DATA> schedules() const;
    bool setSchedules(const VDHash<int, vorandel::SCHEDULE_DATA>& schedules);

    // The rights of the users who may log in, by user.
    QMap<vorandel::TYPE_ID, QStringList> accounts() const;
    bool setAccount(vorandel::TYPE_ID user, const QStringList& roles);
    // The hash of a login's password (PasswordHash); empty when it has none.
    QByteArray passwordHash(vorandel::TYPE_ID user) const;
    bool setPasswordHash(vorandel::TYPE_ID user, const QByteArray& hash);

    QList<vorandel::SYSLOG_DATA> syslog() const;
    bool addSyslog(const vorandel::SYSLOG_DATA& entry);

    // Parameters as they are kept: a CBOR map of text to text.
    static QByteArray encodeParameters(const QHash<QString, QString>& parameters);
    // False for bytes that are not such a map. Keys and values are taken from `texts` (by their
    // UTF-8) where it has them, and added to it where not, so that the objects decoded with one
    // table share one copy of each text.
    static bool decodeParameters(const QByteArray& bytes, QHash<QString, QString>& parameters,
                                 QHash<QByteArray, QString>& texts);

private:
    // Objects read but for their parameters, which are still as they are kept.
    struct Batch
    {
        QVector<vorandel::ObjectInfo> objects;
        QVector<QByteArray> parameters;
    };
    static QVector<vorandel::ObjectInfo> decodeBatch(Batch batch);
    // Runs a query of the whole table and hands over its rows; a failure is logged.
    void forEachRow(const QString& sql, const std::function<void(const QSqlQuery&)>& take) const;

    Database& m_database;
};

}  // namespace vdserver
