#pragma once

#include "objecttreeproxy.h"

#include <QStringList>

// The objects that the logged-in operator may work with, narrowed to some object types. In the
// stand-in every operator is granted every object; the type filter is real, and applies to every
// node of a tree (see ObjectTreeProxy::setFilterAcceptsParents for keeping the way down to a
// node whose parents are of other types).
class VDPLATFORM_EXPORT GrantedProxyModel : public ObjectTreeProxy
{
    Q_OBJECT
public:
    explicit GrantedProxyModel(QObject* parent = nullptr);
    ~GrantedProxyModel() override;

    // Only objects of these types pass; an empty list lets every type through.
    void setObjectTypeFilter(const QStringList& types);
    QStringList objectTypeFilter() const { return m_types; }

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

private:
    QStringList m_types;
};
