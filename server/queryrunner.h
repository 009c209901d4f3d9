#pragma once

#include "dbquery.h"

#include <QList>
#include <QString>

namespace vdserver {

class ObjectStore;

// Runs the statements of an asynchronous database query against the store, as the database
// would. It understands the one statement that the console sends: per worker of a list, how
// many biometric templates he has and the uid of his card. Its subquery for the card yields one
// value only, so a worker with templates and two cards fails the whole query, as it would on
// the database. Any other statement is refused.
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
    const ObjectStore& m_store;
};

}  // namespace vdserver
