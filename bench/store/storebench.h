#pragma once

#include <QString>
#include <QVector>

// The console over a store of a desk that has run for years: N requests with their workers,
// seeded into the store when it is new. The figures are taken in a process of their own, which
// opens the store as the console does:
//
//   open_ms         the store read and the operator logged in
//   first_paint_ms  from the start until the request table has been painted
//                   (both also as the processor time that they took, all threads together)
//   decision_ms     the median of several confirmations: from the query to the tab's store
//                   holding the new state, the commit to the disk included
//   file_mb         the SQLite file with its log
class StoreBench
{
public:
    // `database` as --database takes it; empty: a new file in a temporary folder.
    StoreBench(const QString& database, int requests, int decisions);

    // Seeds the store if it is new, then measures in a fresh process. Returns the exit code.
    int run();
    // The fresh process's part. Returns the exit code.
    int measure();

private:
    QString m_database;
    int m_requests = 0;
    int m_decisions = 0;
};
