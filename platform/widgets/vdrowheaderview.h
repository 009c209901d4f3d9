#pragma once

#include "vdplatform_export.h"

#include <QHash>
#include <QHeaderView>
#include <QSize>

// The row header of VDTableView. With rows sized to their contents a header measures every one
// of its sections whenever rows come or go; on a table of a hundred thousand rows that is the
// whole cost of showing it. Row labels differ only in their text, so sections whose labels are
// equally long take the same size, and each length is measured once.
class VDPLATFORM_EXPORT VDRowHeaderView : public QHeaderView
{
    Q_OBJECT
public:
    explicit VDRowHeaderView(QWidget* parent = nullptr);

    void setModel(QAbstractItemModel* model) override;

protected:
    QSize sectionSizeFromContents(int logicalIndex) const override;
    void changeEvent(QEvent* event) override;

private:
    void forgetSizes();

    mutable QHash<int, QSize> m_sizeByLabelLength;
    QMetaObject::Connection m_headerDataChanged;
};
