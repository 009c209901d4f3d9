#pragma once

#include "objecttreeproxy.h"

#include <QStringList>

// The objects that the logged-in operator may work with, narrowed to some object types. In the
// stand-in every operator is granted every object; the type filter is real.
class VDPLATFORM_EXPORT GrantedProxyModel : public ObjectTreeProxy
{
    Q_OBJECT
public:
    explicit GrantedProxyModel(QObject* parent = nullptr);
    ~GrantedProxyModel() override;

    // Only objects of these types pass; an empty list lets every type through.
    void setObjectTypeFilter(const QStringList& types);
    QStringList objectTypeFilter() const { return m_types; }
    // A node that doesn't pass itself is still shown when one of its descendants passes, so
    // that the tree keeps its way down to it.
    void setFilterAcceptsParents(bool accepts);
    bool filterAcceptsParents() const { return m_acceptsParents; }

protected:
    bool filterAcceptsRow(int sourceRow) const override;

private:
    QStringList m_types;
    bool m_acceptsParents = false;
};
