#pragma once

#include "objectinfo.h"
#include "servicerecords.h"
#include "storelocation.h"
#include "vdhash.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QHash>
#include <QMap>
#include <QPair>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace vdserver {

class Database;
class StoreRecords;

// Object types of the datanames that the platform's constants leave without one.
inline const QString CONFIRM_LIST_TYPE = QStringLiteral("OT_CONFIRM_LIST");
inline const QString DEVICE_TYPE = QStringLiteral("OT_DEVICE");
inline const QString JOB_TYPE = QStringLiteral("OT_JOB");

// What the changes since the last look did, by dataname.
struct ObjectChanges
{
    QMap<QString, QSet<vorandel::TYPE_ID>> changed;
    QMap<QString, QSet<vorandel::TYPE_ID>> removed;
};

// The server's objects, by dataname, with their blobs and biometric templates, the database
// settings, the schedules and the accounts of those who may log in. Uids are unique across all
// datanames and never given twice. Every put and removal is noted until takeChanges(), so that
// what a query changed can be announced after its answer.
//
// The objects, settings, schedules and accounts are held in memory and read from there; blobs,
// templates and the system log are read from the database when asked for. Every change is
// written through to the database (schema/*.sql): changes between begin() and commit() are kept
// whole or not at all, and a transaction that fails or is rolled back leaves memory as it was at
// begin(), but for uids handed out meanwhile, which are skipped.
class ObjectStore
{
    Q_DECLARE_TR_FUNCTIONS(ObjectStore)
public:
    // An empty store in memory, gone with this object. Every dataname has a table from the start,
    // empty until filled.
    ObjectStore();
    ~ObjectStore();
    Q_DISABLE_COPY(ObjectStore)

    // Opens the store at `location` instead, making or upgrading its tables, and reads its
    // objects. False, with errorString(), when it can't; then this store stays as it was, unless
    // it was the one at `location`, which is read afresh.
    bool open(const StoreLocation& location);
    // Whether the store that the last open() found holds no objects: it was just made, or its
    // first filling never finished.
    bool isNew() const { return m_isNew; }
    const Database& database() const { return *m_database; }
    // Why the last open() or commit() failed.
    QString errorString() const { return m_error; }

    void begin();
    // False, with errorString(), when the changes could not be kept; then they are all undone.
    bool commit();
    void rollback();

    // Between transactions: makes sure that the database still answers, and connects again when
    // it doesn't (a PostgreSQL server that restarted, or ended this connection). A commit whose
    // fate was lost with the connection may have been kept all the same: then the objects are
    // read afresh, and what differs from memory is noted as changes. True when it read them
    // afresh. A database that can't be reached is tried again at most every two seconds;
    // meanwhile transactions fail, with the database's reason.
    bool keepConnected();

    // The datanames in the order in which a reader best takes them: what others refer to first.
    static QStringList datanames();
    // The dataname that holds objects of this type; empty for a type the server doesn't keep.
    static QString datanameForType(const QString& type);

    // The table of a dataname; null for an unknown one. The pointer stays valid as long as the
    // store, though open() and keepConnected() may fill the table afresh.
    const vorandel::OBJECT_HASH* objects(const QString& dataname) const;
    // An object by uid, whatever its dataname; null when there is none.
    const vorandel::ObjectInfo* object(vorandel::TYPE_ID uid) const;
    // An object of that dataname; null when it has no such uid.
    const vorandel::ObjectInfo* object(vorandel::TYPE_ID uid, const QString& dataname) const;
    // The card that carries this number; 0 for none.
    vorandel::TYPE_ID cardByNumber(vorandel::CARD_ID number) const;

    vorandel::TYPE_ID newUid() { return ++m_lastUid; }
    // Inserts or replaces an object by uid, in the table of its type, which must be one that
    // the server keeps. The store keeps each link once, with the object that holds it: a link's
    // owner is that object, and links that point at it are not kept with it.
    void put(const vorandel::ObjectInfo& object);
    // Removes an object with its blobs, templates and account.
    void remove(vorandel::TYPE_ID uid);
    ObjectChanges takeChanges();

    // A blob of an object. A worker's portrait that was promised is drawn on first request.
    QByteArray blob(vorandel::TYPE_ID uid, const QString& name);
    // An empty blob is no blob.
    void setBlob(vorandel::TYPE_ID uid, const QString& name, const QByteArray& bytes);
    // The worker gets a drawn portrait as "PT_PHOTO", made when it is first asked for: drawing
    // every photo of a big set up front would cost seconds for pictures nobody looks at.
    void promisePortrait(vorandel::TYPE_ID worker);

    QVector<vorandel::TEMPLATE_DATA> templates(vorandel::TYPE_ID worker) const;
    void setTemplates(vorandel::TYPE_ID worker, const QVector<vorandel::TEMPLATE_DATA>& templates);

    QHash<QString, QString> settings() const { return m_settings; }
    void setSetting(const QString& key, const QString& value);
    VDHash<int, vorandel::SCHEDULE_DATA> schedules() const { return m_schedules; }
    void setSchedules(const VDHash<int, vorandel::SCHEDULE_DATA>& schedules);

    // The rights of the users who may log in, by user.
    QMap<vorandel::TYPE_ID, QStringList> accounts() const { return m_accounts; }
    void setAccount(vorandel::TYPE_ID user, const QStringList& roles);
    // The hash of a user's password (PasswordHash), read from the database; empty for none.
    QByteArray passwordHash(vorandel::TYPE_ID user) const;
    void setPasswordHash(vorandel::TYPE_ID user, const QByteArray& hash);

    QList<vorandel::SYSLOG_DATA> syslog() const;
    void addSyslog(const vorandel::SYSLOG_DATA& entry);

    // Forgets everything, the noted changes included; the tables stay, empty. Uids go on from
    // where they were.
    void clear();

private:
    vorandel::OBJECT_HASH* table(const QString& dataname);
    // Whether a change may go to the database now; opens its transaction on the first one.
    bool writing();
    // Notes the first write of the transaction that failed.
    void written(bool ok);
    // Keeps a way back to memory as it was, for a rollback.
    void remember(std::function<void()> undo);

    std::unique_ptr<Database> m_database;
    std::unique_ptr<StoreRecords> m_records;
    bool m_isNew = true;
    QString m_error;

    std::map<QString, vorandel::OBJECT_HASH> m_tables;
    vorandel::TYPE_ID m_lastUid = 0;
    vorandel::TYPE_ID m_savedUid = 0;  // the last uid as the database has it
    ObjectChanges m_changes;
    QHash<vorandel::TYPE_ID, QByteArray> m_portraits;  // drawn so far, by worker
    QHash<QString, QString> m_settings;
    VDHash<int, vorandel::SCHEDULE_DATA> m_schedules;
    QMap<vorandel::TYPE_ID, QStringList> m_accounts;

    // The connection: when it last answered, whether a failure makes it doubtful, whether a
    // commit failed without the database saying that it was undone, when it was last tried again.
    QElapsedTimer m_lastContact;
    bool m_suspect = false;
    bool m_commitUncertain = false;
    QElapsedTimer m_lastReconnect;

    // The open transaction.
    bool m_inTransaction = false;
    QString m_failure;
    std::vector<std::function<void()>> m_undo;
    ObjectChanges m_changesAtBegin;
};

}  // namespace vdserver
