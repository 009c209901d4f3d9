#include "database.h"

#include "schema.h"
#include "serverlogging.h"

#include <QDateTime>
#include <QMap>
#include <QRegularExpression>
#include <QSqlError>
#include <QStringList>

#include <atomic>

namespace vdserver {

namespace {
// How long an SQLite file that another program holds is waited for.
constexpr int SqliteBusyMs = 2000;
// How long PostgreSQL's lock on the store is waited for.
const QString LockWait = QStringLiteral("3s");
// The first key of the advisory lock: this server's; the second names the schema.
constexpr int LockClass = 0x7644;

// SQLite's result codes that tell the operator something.
const QString SqliteBusy = QStringLiteral("5");
const QString SqliteNotADatabase = QStringLiteral("26");
// PostgreSQL's state for a lock that was not granted in time.
const QString PostgresLockNotAvailable = QStringLiteral("55P03");

QString newConnectionName()
{
    static std::atomic<int> count{0};
    return QStringLiteral("vdserver-store-%1").arg(++count);
}

// libpq's connection parameters, quoted as it wants them.
QString connectOptions(const StoreLocation& location)
{
    QMap<QString, QString> options{
        {QStringLiteral("connect_timeout"), QString::number(location.connectTimeoutSeconds())},
        {QStringLiteral("application_name"), QStringLiteral("vdserver")},
    };
    const QMap<QString, QString> given = location.options();
    for (auto it = given.cbegin(); it != given.cend(); ++it)
        options.insert(it.key(), it.value());
    QStringList pairs;
    for (auto it = options.cbegin(); it != options.cend(); ++it) {
        QString value = it.value();
        value.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('\''), QLatin1String("\\'"));
        pairs << QStringLiteral("%1='%2'").arg(it.key(), value);
    }
    return pairs.join(QLatin1Char(';'));
}
}  // namespace

Database::Database() = default;

Database::~Database()
{
    close();
}

bool Database::open(const StoreLocation& location)
{
    close();
    m_location = location;
    m_versionFound = 0;
    m_error.clear();
    m_connectionName = newConnectionName();
    const bool sqlite = location.engine() == Engine::SQLite;
    m_database = addConnection(location, m_connectionName);
    if (!m_database.isValid()) {
        fail(tr("The %1 driver of Qt SQL is missing (Debian's package %2).")
                 .arg(sqlite ? QStringLiteral("SQLite") : QStringLiteral("PostgreSQL"),
                      sqlite ? QStringLiteral("libqt5sql5-sqlite") : QStringLiteral("libqt5sql5-psql")));
        close();
        return false;
    }
    const bool opened = (sqlite ? openSqlite() : openPostgres()) && migrate();
    if (!opened) {
        close();
        return false;
    }
    return true;
}

bool Database::reopen()
{
    const StoreLocation location = m_location;
    return open(location);
}

bool Database::isAlive()
{
    if (!m_database.isOpen())
        return false;
    if (engine() == Engine::SQLite)
        return true;
    QSqlQuery probe(m_database);
    return probe.exec(QStringLiteral("SELECT 1")) && probe.next();
}

QSqlDatabase Database::addConnection(const StoreLocation& location, const QString& connectionName)
{
    if (location.engine() == Engine::SQLite) {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connectionName);
        database.setDatabaseName(location.inMemory() ? QStringLiteral(":memory:") : location.path());
        database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(SqliteBusyMs));
        return database;
    }
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), connectionName);
    database.setHostName(location.host());
    if (location.port() > 0)
        database.setPort(location.port());
    database.setUserName(location.user());
    database.setPassword(location.password());
    database.setDatabaseName(location.databaseName());
    database.setConnectOptions(connectOptions(location));
    return database;
}

void Database::close()
{
    m_statements.clear();
    m_inTransaction = false;
    if (m_connectionName.isEmpty())
        return;
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connectionName);
    m_connectionName.clear();
}

bool Database::openSqlite()
{
    const QString name = m_location.displayName();
    if (!m_database.open())
        return fail(tr("Cannot open the store %1: %2").arg(name, errorText(m_database.lastError())));

    // Nothing is written before the file has shown that it is a store of ours. The lock that this
    // connection takes with its first read is kept until it closes, and the log's index lives in
    // its memory, not in a file beside the store.
    if (!m_location.inMemory() && !run(QStringLiteral("PRAGMA locking_mode = EXCLUSIVE")))
        return false;
    QSqlQuery tables(m_database);
    if (!tables.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite_%'"))) {
        const QSqlError error = tables.lastError();
        if (error.nativeErrorCode() == SqliteNotADatabase)
            return fail(tr("%1 is not a database (%2). It was left as it is.").arg(name, errorText(error)));
        if (error.nativeErrorCode() == SqliteBusy)
            return fail(tr("The store %1 is in use by another program.").arg(name));
        return fail(tr("Cannot read the store %1: %2").arg(name, errorText(error)));
    }
    QStringList names;
    while (tables.next())
        names << tables.value(0).toString();
    tables.finish();
    if (!checkStore(names))
        return false;

    if (!m_location.inMemory()) {
        QSqlQuery journal(m_database);
        if (journal.exec(QStringLiteral("PRAGMA journal_mode = WAL")) && journal.next()
            && journal.value(0).toString().compare(QLatin1String("wal"), Qt::CaseInsensitive) != 0)
            qCWarning(lcServer).noquote() << "no write-ahead log for" << name << "on this file system:"
                                          << journal.value(0).toString();
    }
    if (!run(QStringLiteral("PRAGMA synchronous = FULL")) || !run(QStringLiteral("PRAGMA foreign_keys = ON")))
        return false;
    // The exclusive lock is taken now, not at the first change.
    if (!m_location.inMemory()) {
        QSqlQuery lock(m_database);
        if (!lock.exec(QStringLiteral("BEGIN EXCLUSIVE"))) {
            if (lock.lastError().nativeErrorCode() == SqliteBusy)
                return fail(tr("The store %1 is in use by another program.").arg(name));
            return fail(tr("Cannot lock the store %1: %2").arg(name, errorText(lock.lastError())));
        }
        if (!run(QStringLiteral("COMMIT")))
            return false;
    }
    return true;
}

bool Database::openPostgres()
{
    const QString name = m_location.displayName();
    if (!m_database.open()) {
        return fail(tr("Cannot reach the PostgreSQL server at %1 (store %2): %3")
                        .arg(m_location.address(), name, errorText(m_database.lastError())));
    }
    if (!run(QStringLiteral("SET client_min_messages = warning")))
        return false;

    QSqlQuery schema(m_database);
    if (!schema.exec(QStringLiteral("SELECT current_schema()")) || !schema.next())
        return fail(tr("Cannot read the store %1: %2").arg(name, errorText(schema.lastError())));
    if (schema.value(0).isNull())
        return fail(tr("The store %1 has no schema to keep its tables in (see its search_path).").arg(name));

    if (!run(QStringLiteral("SET lock_timeout = '%1'").arg(LockWait)))
        return false;
    QSqlQuery lock(m_database);
    if (!lock.exec(QStringLiteral("SELECT pg_advisory_lock(%1, hashtext(current_schema()))").arg(LockClass))) {
        if (lock.lastError().nativeErrorCode() == PostgresLockNotAvailable)
            return fail(tr("The store %1 is in use by another server.").arg(name));
        return fail(tr("Cannot lock the store %1: %2").arg(name, errorText(lock.lastError())));
    }
    if (!run(QStringLiteral("RESET lock_timeout")))
        return false;

    QSqlQuery tables(m_database);
    if (!tables.exec(QStringLiteral("SELECT table_name FROM information_schema.tables "
                                    "WHERE table_schema = current_schema()")))
        return fail(tr("Cannot read the store %1: %2").arg(name, errorText(tables.lastError())));
    QStringList names;
    while (tables.next())
        names << tables.value(0).toString();
    return checkStore(names);
}

bool Database::checkStore(const QStringList& tables)
{
    const QString name = m_location.displayName();
    const QString migrations = QStringLiteral("schema_migrations");
    if (tables.isEmpty())
        return true;
    if (!tables.contains(migrations)) {
        return fail(tr("%1 holds tables of another program, not a store of this server. It was left as it is.")
                        .arg(name));
    }
    QSqlQuery version(m_database);
    if (!version.exec(QStringLiteral("SELECT MAX(version) FROM schema_migrations")) || !version.next())
        return fail(tr("Cannot read the schema version of the store %1: %2").arg(name, errorText(version.lastError())));
    m_versionFound = version.value(0).toInt();
    if (m_versionFound > Schema::latestVersion()) {
        return fail(tr("The store %1 was written by a newer build (schema version %2; this build knows versions up "
                       "to %3). It was left as it is; open it with a newer build.")
                        .arg(name)
                        .arg(m_versionFound)
                        .arg(Schema::latestVersion()));
    }
    return true;
}

bool Database::migrate()
{
    const QList<Schema::Migration> migrations = Schema::after(m_versionFound, engine());
    for (const Schema::Migration& migration : migrations) {
        if (!begin())
            return false;
        for (const QString& sql : migration.statements) {
            if (!run(sql)) {
                rollback();
                return fail(tr("Cannot bring the store %1 to schema version %2 (%3): %4")
                                .arg(m_location.displayName())
                                .arg(migration.version)
                                .arg(migration.name, m_error));
            }
        }
        const QVariantList applied{migration.version, QDateTime::currentDateTimeUtc().toString(Qt::ISODate)};
        if (!run(QStringLiteral("INSERT INTO schema_migrations (version, applied) VALUES (?, ?)"), applied)
            || !commit()) {
            rollback();
            return false;
        }
        if (!m_location.inMemory())
            qCInfo(lcServer).noquote() << "store" << m_location.displayName() << "migrated to" << migration.version
                                       << migration.name;
    }
    return true;
}

QSqlQuery& Database::statement(const QString& sql)
{
    auto it = m_statements.find(sql);
    if (it == m_statements.end()) {
        QSqlQuery query(m_database);
        query.setForwardOnly(true);
        if (!query.prepare(sql))
            qCWarning(lcServer).noquote() << "fail to prepare" << sql << errorText(query.lastError());
        it = m_statements.insert(sql, query);
    }
    return *it;
}

bool Database::run(QSqlQuery& query, const QVariantList& values)
{
    for (int i = 0; i < values.size(); ++i)
        query.bindValue(i, values.at(i));
    if (query.exec())
        return true;
    return fail(errorText(query.lastError()));
}

bool Database::run(const QString& sql, const QVariantList& values)
{
    QSqlQuery query(m_database);
    if (values.isEmpty()) {
        if (query.exec(sql))
            return true;
        return fail(errorText(query.lastError()));
    }
    if (!query.prepare(sql))
        return fail(errorText(query.lastError()));
    return run(query, values);
}

bool Database::begin()
{
    if (m_inTransaction)
        return true;
    if (!m_database.transaction())
        return fail(errorText(m_database.lastError()));
    m_inTransaction = true;
    return true;
}

bool Database::commit()
{
    if (!m_inTransaction)
        return true;
    finishStatements();
    if (!m_database.commit())
        return fail(errorText(m_database.lastError()));
    m_inTransaction = false;
    return true;
}

void Database::rollback()
{
    if (!m_inTransaction)
        return;
    finishStatements();
    if (!m_database.rollback())
        qCWarning(lcServer).noquote() << "fail to roll back:" << errorText(m_database.lastError());
    m_inTransaction = false;
}

void Database::finishStatements()
{
    // A statement that still holds rows would keep SQLite from ending the transaction.
    for (QSqlQuery& query : m_statements)
        query.finish();
}

bool Database::fail(const QString& text)
{
    m_error = text;
    return false;
}

QString Database::errorText(const QSqlError& error)
{
    // PostgreSQL's text begins with its severity and ends with the error's state in brackets.
    static const QRegularExpression Decorations(QStringLiteral(R"(^\s*(ERROR|FATAL|PANIC):\s*|\s*\(\w{5}\)\s*$)"));
    QString text = error.databaseText();
    text.remove(Decorations);
    text = text.trimmed();
    return text.isEmpty() ? error.text().trimmed() : text;
}

}  // namespace vdserver
