#include "grantedproxymodel.h"

GrantedProxyModel::GrantedProxyModel(QObject* parent) : ObjectTreeProxy(parent) {}

GrantedProxyModel::~GrantedProxyModel() = default;

void GrantedProxyModel::setObjectTypeFilter(const QStringList& types)
{
    if (types == m_types)
        return;
    m_types = types;
    invalidateFilter();
}

bool GrantedProxyModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    if (!ObjectTreeProxy::filterAcceptsRow(sourceRow, sourceParent))
        return false;
    // A source that holds no records has no types to tell apart.
    const vorandel::ObjectInfo& object = sourceObject(sourceRow, sourceParent);
    return m_types.isEmpty() || !object.isValid() || m_types.contains(object.type);
}
