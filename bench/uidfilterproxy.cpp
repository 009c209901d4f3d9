#include "uidfilterproxy.h"

void UidFilterProxy::setUids(const QSet<vorandel::TYPE_ID>& uids)
{
    m_uids = uids;
    invalidateFilter();
}

bool UidFilterProxy::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    return m_uids.contains(sourceModel()->index(sourceRow, 0, sourceParent).data().toUInt());
}
