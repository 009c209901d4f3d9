#pragma once

#include "vdplatform_export.h"

#include <QByteArray>
#include <QList>
#include <QTableView>

// The console's table: a header menu that shows and hides columns, columns that start hidden
// until the operator shows them, and a header state that the owner keeps between runs.
class VDPLATFORM_EXPORT VDTableView : public QTableView
{
    Q_OBJECT
public:
    explicit VDTableView(QWidget* parent = nullptr);
    ~VDTableView() override;

    // Columns offered in the header's context menu, in menu order.
    void setHeaderMenuColumns(const QList<int>& columns);
    QList<int> headerMenuColumns() const;
    // Columns hidden until a saved state or the operator shows them.
    void setHeaderHiddenByDefaultColumns(const QList<int>& columns);
    QList<int> headerHiddenByDefaultColumns() const;
    // Restores what headerStateChanged gave; empty or broken bytes keep the defaults.
    void restoreHeaderState(const QByteArray& state);
    QByteArray headerState() const;

    void setModel(QAbstractItemModel* model) override;

signals:
    // The operator moved, resized, sorted, showed or hid a column.
    void headerStateChanged(const QByteArray& state);
};
