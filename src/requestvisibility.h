#pragma once

#include "objectinfo.h"

#include <QSet>

// Which requests an operator may see: all of them with the right to see all, otherwise those on
// whose approver chain he stands.
//
// The table is refreshed after every change of the store, so the set is kept rather than rebuilt:
// changes of single requests update it, and it is rebuilt only when the operator, his right or
// the table's set of uids has changed behind its back. Handing out the kept set costs nothing,
// and a proxy handed the same set again sees at once that nothing changed.
class RequestVisibility
{
public:
    // The visible uids for this operator over `requests` (null: none).
    QSet<vorandel::TYPE_ID> visible(const vorandel::OBJECT_HASH* requests, unsigned int user, bool showAll);
    // The store reports these requests changed (or new).
    void changed(const vorandel::OBJECT_HASH* requests, const QList<vorandel::TYPE_ID>& uids);
    // The store reports these requests gone.
    void removed(const QList<vorandel::TYPE_ID>& uids);

    // The uid under which a request is visible to `user`, or 0 if it isn't: the owner named by
    // the first link of its chain, when any link of the chain names the user.
    static vorandel::TYPE_ID visibleAs(const vorandel::ObjectInfo& request, unsigned int user);

private:
    void rebuild(const vorandel::OBJECT_HASH* requests);

    bool m_valid = false;
    unsigned int m_user = 0;
    bool m_showAll = false;
    bool m_irregular = false;  // some chain names another request than its own
    const vorandel::OBJECT_HASH* m_table = nullptr;
    QSet<vorandel::TYPE_ID> m_known;    // every uid of the table, as last seen
    QSet<vorandel::TYPE_ID> m_visible;
};
