#include "requestvisibility.h"

#include "constants.h"

using namespace vorandel;

TYPE_ID RequestVisibility::visibleAs(const ObjectInfo& request, unsigned int user)
{
    const QList<INHERIT_DATA> chain = request.inherits.values(INHERIT_CONFIRM_LIST_PASS_REQUEST);
    for (const INHERIT_DATA& link : chain) {
        if (link.second == user)
            return chain.first().first;
    }
    return 0;
}

QSet<TYPE_ID> RequestVisibility::visible(const OBJECT_HASH* requests, unsigned int user, bool showAll)
{
    const int size = requests ? requests->size() : 0;
    if (!m_valid || m_user != user || m_showAll != showAll || m_table != requests || m_known.size() != size) {
        m_user = user;
        m_showAll = showAll;
        rebuild(requests);
    }
    return m_visible;
}

void RequestVisibility::rebuild(const OBJECT_HASH* requests)
{
    m_table = requests;
    m_known.clear();
    m_visible.clear();
    m_irregular = false;
    m_valid = true;
    if (!requests)
        return;
    m_known.reserve(requests->size());
    for (auto it = requests->cbegin(); it != requests->cend(); ++it)
        m_known.insert(it.key());
    if (m_showAll) {
        m_visible = m_known;
        return;
    }
    for (auto it = requests->cbegin(); it != requests->cend(); ++it) {
        if (const TYPE_ID uid = visibleAs(it.value(), m_user)) {
            m_visible.insert(uid);
            m_irregular = m_irregular || uid != it.key();
        }
    }
}

void RequestVisibility::changed(const OBJECT_HASH* requests, const QList<TYPE_ID>& uids)
{
    if (!m_valid || requests != m_table || !requests || m_irregular) {
        m_valid = false;
        return;
    }
    // Contains before insert and remove: a set that is shared with a proxy must not be copied
    // for a change that changes nothing.
    for (TYPE_ID uid : uids) {
        const auto it = requests->constFind(uid);
        if (it == requests->cend()) {
            m_valid = false;
            return;
        }
        if (!m_known.contains(uid))
            m_known.insert(uid);
        const TYPE_ID as = m_showAll ? uid : visibleAs(it.value(), m_user);
        if (as != 0 && as != uid) {
            // A chain that names another request than its own: only a full pass gets that right.
            m_valid = false;
            return;
        }
        if (as != 0 && !m_visible.contains(uid))
            m_visible.insert(uid);
        else if (as == 0 && m_visible.contains(uid))
            m_visible.remove(uid);
    }
}

void RequestVisibility::removed(const QList<TYPE_ID>& uids)
{
    if (m_irregular) {
        m_valid = false;
        return;
    }
    for (TYPE_ID uid : uids) {
        if (m_known.contains(uid))
            m_known.remove(uid);
        if (m_visible.contains(uid))
            m_visible.remove(uid);
    }
}
