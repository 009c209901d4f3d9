#pragma once

#include "dbquery.h"

#include <QList>
#include <QString>

namespace vdserver {

class ObjectStore;

// Runs the statements of an asynchronous database query against the store.
//
// On PostgreSQL they run as they stand, in a read-only transaction of their own, with their
// prepared values bound by name and a time limit (the query's own, or 30 seconds).
//
// SQLite speaks another dialect, so there the query is answered as the database would answer it.
// That understands the one statement that the console sends: per worker of a list, how many
// biometric templates he has and the uid of his card. Its subquery for the card yields one value
// only, so a worker with templates and two cards fails the whole query, as it would on the
// database. Any other statement is refused.
class QueryRunner
{
public:
    struct Result
    {
        QString error;  // the database's text; empty on success
        QList<DbResult> results;  // one per statement
    };

    explicit QueryRunner(const ObjectStore& store);

    Result run(const DbQuery& query) const;

private:
    Result runOnDatabase(const DbQuery& query) const;
    Result interpret(const DbQuery& query) const;

    const ObjectStore& m_store;
};

}  // namespace vdserver
