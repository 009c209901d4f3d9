#include "styleditemdelegate.h"

StyledItemDelegate::StyledItemDelegate(QObject* parent) : QStyledItemDelegate(parent) {}

StyledItemDelegate::~StyledItemDelegate() = default;

QString StyledItemDelegate::name(const QModelIndex& index) const
{
    return index.data(Qt::DisplayRole).toString();
}

void StyledItemDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    option->text = name(index);
}
