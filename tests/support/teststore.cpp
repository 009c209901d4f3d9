#include "teststore.h"

#include "database.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTextStream>
#include <QUrl>

#include <atomic>

using vdserver::StoreLocation;

namespace {
// ctest reports a test that exits with this as skipped (SKIP_RETURN_CODE).
constexpr int SkippedExitCode = 77;
const QString AdminConnection = QStringLiteral("vdtest-admin");

QString postgresAddress()
{
    return qEnvironmentVariable("VD_TEST_POSTGRESQL");
}

// The connection that makes and drops the schemas of the tests; opened on first use.
QSqlDatabase admin(QString* error)
{
    if (!QSqlDatabase::contains(AdminConnection)) {
        QString parseError;
        const std::optional<StoreLocation> location = StoreLocation::parse(postgresAddress(), &parseError);
        if (!location || location->engine() != StoreLocation::Engine::PostgreSQL) {
            *error = QStringLiteral("VD_TEST_POSTGRESQL is not a postgresql:// address: %1").arg(parseError);
            return {};
        }
        vdserver::Database::addConnection(*location, AdminConnection);
    }
    QSqlDatabase database = QSqlDatabase::database(AdminConnection);
    if (!database.isOpen())
        *error = database.lastError().text();
    return database;
}
}  // namespace

StoreLocation::Engine TestStore::engine()
{
    return qEnvironmentVariable("VD_TEST_ENGINE") == QLatin1String("postgresql") ? StoreLocation::Engine::PostgreSQL
                                                                                  : StoreLocation::Engine::SQLite;
}

std::optional<int> TestStore::checkEngine()
{
    if (!onPostgres())
        return std::nullopt;
    QTextStream out(stdout);
    if (postgresAddress().isEmpty()) {
        out << "SKIP: this suite runs on PostgreSQL when VD_TEST_POSTGRESQL names a database; "
               "./scripts/test.sh starts a private one and sets it."
            << Qt::endl;
        return SkippedExitCode;
    }
    QString error;
    if (!admin(&error).isOpen()) {
        out << "FAIL: this suite was asked to run on PostgreSQL, but " << postgresAddress()
            << " can't be reached: " << error << Qt::endl;
        return 1;
    }
    return std::nullopt;
}

TestStore::TestStore()
{
    if (!onPostgres()) {
        m_address = m_folder.filePath(QStringLiteral("store.sqlite"));
        m_location = StoreLocation::file(m_address);
        return;
    }
    static std::atomic<int> count{0};
    m_schema = QStringLiteral("vdtest_%1_%2").arg(QCoreApplication::applicationPid()).arg(++count);
    QString error;
    QSqlQuery make(admin(&error));
    if (!make.exec(QStringLiteral("CREATE SCHEMA %1").arg(m_schema)))
        qFatal("Cannot make the schema %s: %s", qPrintable(m_schema), qPrintable(make.lastError().text() + error));
    const QString address = postgresAddress();
    m_address = address + (address.contains(QLatin1Char('?')) ? QLatin1Char('&') : QLatin1Char('?'))
        + QStringLiteral("options=") + QUrl::toPercentEncoding(QStringLiteral("-csearch_path=") + m_schema);
    m_location = *StoreLocation::parse(m_address, &error);
}

TestStore::~TestStore()
{
    if (m_schema.isEmpty())
        return;
    QString error;
    QSqlQuery drop(admin(&error));
    if (!drop.exec(QStringLiteral("DROP SCHEMA %1 CASCADE").arg(m_schema)))
        qWarning("Cannot drop the schema %s: %s", qPrintable(m_schema), qPrintable(drop.lastError().text()));
}

std::optional<QStringList> TestStore::execute(const QStringList& statements, QString* error) const
{
    const QString name = QStringLiteral("vdtest-behind-the-back");
    std::optional<QStringList> rows;
    {
        QSqlDatabase database = vdserver::Database::addConnection(m_location, name);
        QString failure;
        if (!database.open()) {
            failure = database.lastError().text();
        } else {
            QSqlQuery query(database);
            rows = QStringList();
            for (const QString& statement : statements) {
                if (!query.exec(statement)) {
                    failure = statement + QStringLiteral(": ") + query.lastError().text();
                    rows.reset();
                    break;
                }
                rows->clear();
                while (query.next())
                    rows->append(query.value(0).toString());
            }
        }
        if (error)
            *error = failure;
    }
    QSqlDatabase::removeDatabase(name);
    return rows;
}
