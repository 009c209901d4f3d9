#include "queryrunner.h"

#include "constants.h"
#include "objectstore.h"

#include <QRegularExpression>
#include <QStringList>

#include <set>

namespace vdserver {

namespace {
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
