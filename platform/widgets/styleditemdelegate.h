#pragma once

#include "vdplatform_export.h"

#include <QStyledItemDelegate>

// A delegate that shows each item by a name it works out itself: lists of objects let a
// subclass say how an object is called there.
class VDPLATFORM_EXPORT StyledItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    explicit StyledItemDelegate(QObject* parent = nullptr);
    ~StyledItemDelegate() override;

    // The text of the item; the model's display text unless a subclass knows better.
    virtual QString name(const QModelIndex& index) const;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};
