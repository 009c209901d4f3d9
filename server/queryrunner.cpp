#include "queryrunner.h"

#include "constants.h"
#include "database.h"
#include "objectstore.h"

#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStringList>

#include <set>

namespace vdserver {

namespace {
constexpr int DefaultTimeoutMs = 30000;

// The statement, with any spacing and case; the one group is the list inside ARRAY[...].
const QRegularExpression FingersCount(
    QStringLiteral(R"(^\s*SELECT\s+user_object_id\s*,\s*count\s*\(\s*id\s*\)\s*,)"
                   R"(\s*\(\s*SELECT\s+child_id\s+FROM\s+object_inherit\s+WHERE\s+ref_type\s*=\s*3)"
                   R"(\s+AND\s+parent_id\s*=\s*user_object_id\s*\)\s*FROM\s+fingers)"
                   R"(\s+WHERE\s+user_object_id\s*=\s*ANY\s*\(\s*ARRAY\s*\[([^\]]*)\]\s*::\s*bigint\s*\[\s*\]\s*\))"
                   R"(\s+GROUP\s+BY\s+user_object_id\s*;?\s*$)"),
    QRegularExpression::CaseInsensitiveOption);
}  // namespace

QueryRunner::QueryRunner(const ObjectStore& store) : m_store(store)
{
}

QueryRunner::Result QueryRunner::run(const DbQuery& query) const
{
    if (m_store.database().engine() == StoreLocation::Engine::PostgreSQL)
        return runOnDatabase(query);
    return interpret(query);
}

QueryRunner::Result QueryRunner::runOnDatabase(const DbQuery& query) const
{
    const Database& database = m_store.database();
    if (database.inTransaction())
        return {QStringLiteral("the store is busy with a change"), {}};
    QSqlQuery sql(database.connection());
    const auto failed = [&sql] {
        Result result{Database::errorText(sql.lastError()), {}};
        sql.exec(QStringLiteral("ROLLBACK"));
        return result;
    };
    const int timeoutMs = query.timeoutMs > 0 ? query.timeoutMs : DefaultTimeoutMs;
    if (!sql.exec(QStringLiteral("BEGIN READ ONLY"))
        || !sql.exec(QStringLiteral("SET LOCAL statement_timeout = %1").arg(timeoutMs)))
        return failed();

    Result result;
    for (const QString& statement : query.queries) {
        bool ran = false;
        if (query.values.isEmpty()) {
            ran = sql.exec(statement);
        } else if (sql.prepare(statement)) {
            for (auto it = query.values.cbegin(); it != query.values.cend(); ++it)
                sql.bindValue(QLatin1Char(':') + it.key(), it->value);
            ran = sql.exec();
        }
        if (!ran)
            return failed();
        DbResult rows;
        rows.affected = sql.isSelect() ? 0 : sql.numRowsAffected();
        const QSqlRecord record = sql.record();
        rows.columnCount = record.count();
        for (int column = 0; column < record.count(); ++column)
            rows.columnNames.append(record.fieldName(column));
        while (sql.next()) {
            for (int column = 0; column < rows.columnCount; ++column) {
                const QVariant cell = sql.value(column);
                rows.cells.append(cell.isNull() ? QVariant() : cell);
            }
            ++rows.rowCount;
        }
        result.results.append(rows);
    }
    sql.exec(QStringLiteral("ROLLBACK"));
    return result;
}

QueryRunner::Result QueryRunner::interpret(const DbQuery& query) const
{
    Result result;
    for (const QString& statement : query.queries) {
        const QRegularExpressionMatch match = FingersCount.match(statement);
        if (!match.hasMatch())
            return {QStringLiteral("unsupported statement"), {}};

        std::set<vorandel::TYPE_ID> workers;
        const QString list = match.captured(1).trimmed();
        const QStringList items = list.isEmpty() ? QStringList() : list.split(QLatin1Char(','));
        for (const QString& item : items) {
            const QString text = item.trimmed();
            bool number = false;
            const vorandel::TYPE_ID uid = text.toUInt(&number);
            if (!number)
                return {QStringLiteral("invalid input syntax for type bigint: \"%1\"").arg(text), {}};
            workers.insert(uid);
        }

        DbResult rows;
        rows.columnCount = 3;
        rows.columnNames = {QStringLiteral("user_object_id"), QStringLiteral("count"), QStringLiteral("child_id")};
        for (vorandel::TYPE_ID worker : workers) {
            const int count = m_store.templates(worker).size();
            if (count == 0)
                continue;
            const vorandel::ObjectInfo* record = m_store.object(worker, vorandel::SUBJECT_DATANAME);
            const QList<vorandel::INHERIT_DATA> cards =
                record ? record->inherits.values(vorandel::INHERIT_CARD) : QList<vorandel::INHERIT_DATA>();
            if (cards.size() > 1)
                return {QStringLiteral("more than one row returned by a subquery used as an expression"), {}};
            rows.cells << qlonglong(worker) << qlonglong(count)
                       << (cards.isEmpty() ? QVariant() : QVariant(qlonglong(cards.first().second)));
            ++rows.rowCount;
        }
        result.results.append(rows);
    }
    return result;
}

}  // namespace vdserver
