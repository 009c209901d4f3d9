#pragma once

#include "objectinfo.h"
#include "server.h"

#include <QVector>

// The data of a desk that has run for years: the embedded server seeds it, an administrator
// holding every right logs in, and the local store is filled from the server as the console
// fills it.
class Workload
{
public:
    explicit Workload(int requests);

    qint64 seedingMs() const { return m_seedingMs; }
    qint64 publishingMs() const { return m_publishingMs; }
    // How many objects the server holds under a dataname.
    int count(const QString& dataname) const;

    // The `i`-th request of a sequence that runs through all of them, spread over the whole
    // table, before it comes back to the first. It is the record that the store holds now, changed
    // so that its row really changes: the next state, and a validity that begins a day later,
    // which moves the row of a table sorted by that date. An invalid record when there are no
    // requests.
    vorandel::ObjectInfo changedRequest(int i) const;

private:
    vdserver::Server m_server;
    QVector<vorandel::TYPE_ID> m_uids;  // of the requests, ascending
    int m_stride = 1;                   // coprime with the number of requests
    qint64 m_seedingMs = 0;
    qint64 m_publishingMs = 0;
};
