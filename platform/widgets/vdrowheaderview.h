#pragma once

#include "vdplatform_export.h"

#include <QHeaderView>
#include <QSize>

// The row header of VDTableView, whose rows are all one line high.
//
// A header whose sections are sized to their contents measures every section again whenever rows
// come, go, move or change; on a table of a hundred thousand rows that was the whole cost of a
// change. Here every section has the size of the widest row label, measured once for a row count,
// and a change of the rows' contents, which can't change a row's height, measures nothing.
class VDPLATFORM_EXPORT VDRowHeaderView : public QHeaderView
{
    Q_OBJECT
public:
    explicit VDRowHeaderView(QWidget* parent = nullptr);

    void setModel(QAbstractItemModel* model) override;

protected:
    QSize sectionSizeFromContents(int logicalIndex) const override;
    void changeEvent(QEvent* event) override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QVector<int>& roles = QVector<int>()) override;

private:
    void forgetSizes();

    mutable QSize m_sectionSize;
    mutable int m_measuredCount = -1;
    QMetaObject::Connection m_headerDataChanged;
};
