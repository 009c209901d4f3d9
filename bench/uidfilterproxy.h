#pragma once

#include "objectinfo.h"

#include <QSet>
#include <QSortFilterProxyModel>

// The plain proxy of the baseline: a row passes when the uid in its column 0 is in the set.
class UidFilterProxy : public QSortFilterProxyModel
{
    Q_OBJECT
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    // Replaces the set and filters all rows again.
    void setUids(const QSet<vorandel::TYPE_ID>& uids);

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

private:
    QSet<vorandel::TYPE_ID> m_uids;
};
