#pragma once

#include "objectinfo.h"

#include <trie>

#include <QString>
#include <QVarLengthArray>

// The keys under which the tab's search index holds a request. They come from its worker's names,
// word by word and lowered, so that a double surname is found by either part; and from the
// request itself: the worker's number and the request's number, lowered, and the two dates of
// validity as the operator reads them ("dd.MM.yyyy hh:mm:ss"). An empty key is never stored, so a
// request without a worker has only its own.
class RequestSearchKeys
{
public:
    using Index = TrieStatic<unsigned int>;
    using KeyList = QVarLengthArray<QString, 8>;

    // What the table's hand-written columns and the search index read of a request's worker.
    struct Worker
    {
        QString number;
        QString surname;
        QString name;
        QString patronymic;
    };
    static Worker workerOf(const vorandel::ObjectInfo& request);
    static Worker texts(const vorandel::ObjectInfo& workerRecord);

    static void appendNameKeys(KeyList& keys, const Worker& worker);
    static void appendOwnKeys(KeyList& keys, const vorandel::ObjectInfo& request, const QString& workerNumber);

    // Puts the request of that uid into the index afresh. The uid is given apart from the record:
    // a request that the store no longer holds comes as an empty record, and its old keys must
    // still go.
    static void reindex(Index& index, vorandel::TYPE_ID uid, const vorandel::ObjectInfo& request,
                        const Worker& worker);

    // The own keys of all requests, gathered for filling an empty index. It only reads the store,
    // so it may run on another thread while nothing changes the store.
    static Index::Batch gatherOwnKeys(const vorandel::OBJECT_HASH* requests);

    // A stored date ("yyyy-MM-ddThh:mm:ss") as the index holds it.
    static QString dateKey(const QString& iso);
};
