#include "grantedproxymodel.h"

#include "objecttreemodel.h"

GrantedProxyModel::GrantedProxyModel(QObject* parent) : ObjectTreeProxy(parent) {}

GrantedProxyModel::~GrantedProxyModel() = default;

void GrantedProxyModel::setObjectTypeFilter(const QStringList& types)
{
    m_types = types;
    invalidateFilter();
}

void GrantedProxyModel::setFilterAcceptsParents(bool accepts)
{
    m_acceptsParents = accepts;
    invalidateFilter();
}

bool GrantedProxyModel::filterAcceptsRow(int sourceRow) const
{
    if (!ObjectTreeProxy::filterAcceptsRow(sourceRow))
        return false;
    if (m_types.isEmpty())
        return true;
    const auto* objects = qobject_cast<const ObjectTreeModel*>(sourceModel());
    return !objects || m_types.contains(objects->infoAt(sourceRow).type);
}
