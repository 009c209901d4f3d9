#pragma once

#include "storelocation.h"

#include <QCoreApplication>
#include <QHash>
#include <QSqlError>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariantList>

namespace vdserver {

// The connection to the store's database, on SQLite or on PostgreSQL, for the server alone.
//
// Opening checks before it writes anything: a file that is not a database, a database that is
// not a store of this server, and a store of a newer schema than this build knows are refused and
// left as they were. Then it takes the store for this server alone (an exclusive lock on the
// SQLite file; an advisory lock on PostgreSQL, waited for a few seconds, as a server that was
// killed a moment ago may not have let go of it yet) and applies the migrations that the store
// lacks.
//
// An SQLite file keeps a write-ahead log and syncs every commit to the disk; on either engine a
// commit that has returned survives the end of the process, however it ends.
class Database
{
    Q_DECLARE_TR_FUNCTIONS(Database)
public:
    using Engine = StoreLocation::Engine;

    Database();
    ~Database();
    Q_DISABLE_COPY(Database)

    bool open(const StoreLocation& location);
    // Connects again to the store it had open, as open() does, the lock included; false, with
    // errorString(), when it can't.
    bool reopen();
    // Whether the connection still answers a statement: a PostgreSQL server may have restarted,
    // or ended this connection, since the last one. An open SQLite file always answers.
    bool isAlive();
    // A connection to `location` under `connectionName`, set up but not opened and not checked.
    static QSqlDatabase addConnection(const StoreLocation& location, const QString& connectionName);
    void close();
    bool isOpen() const { return m_database.isOpen(); }

    const StoreLocation& location() const { return m_location; }
    Engine engine() const { return m_location.engine(); }
    // The schema version that the store had when it was opened: 0 for one made by open().
    int versionFound() const { return m_versionFound; }
    // Why the last call failed.
    QString errorString() const { return m_error; }

    // A statement prepared once per text and kept for the life of the connection.
    QSqlQuery& statement(const QString& sql);
    // Runs a prepared statement with these values in order; false, with errorString(), on failure.
    bool run(QSqlQuery& query, const QVariantList& values = {});
    // Prepares and runs a statement in one go.
    bool run(const QString& sql, const QVariantList& values = {});

    bool inTransaction() const { return m_inTransaction; }
    bool begin();
    bool commit();
    void rollback();

    QSqlDatabase connection() const { return m_database; }

    // The database's own words for an error, without the engine's decorations.
    static QString errorText(const QSqlError& error);

private:
    bool openSqlite();
    bool openPostgres();
    // Refuses what is not a store of ours or is newer than this build; notes the version found.
    bool checkStore(const QStringList& tables);
    bool migrate();
    void finishStatements();
    bool fail(const QString& text);

    StoreLocation m_location;
    QString m_connectionName;
    QSqlDatabase m_database;
    QHash<QString, QSqlQuery> m_statements;
    int m_versionFound = 0;
    bool m_inTransaction = false;
    QString m_error;
};

}  // namespace vdserver
