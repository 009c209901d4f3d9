#pragma once

#include <QItemDelegate>

class QStyleOptionViewItem;

// Paints a request's state as a check box, ticked for a confirmed request. No view of the tab
// installs it at present; the table paints with its default delegate.
class RequestViewDelegate : public QItemDelegate
{
    Q_OBJECT
public:
    explicit RequestViewDelegate(QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    // A check box at the left of the cell, centred in its height.
    void drawCheckbox(QPainter* painter, const QStyleOptionViewItem& option, int status) const;
};
