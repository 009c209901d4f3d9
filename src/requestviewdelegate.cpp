#include "requestviewdelegate.h"

#include "constants.h"

#include <QApplication>
#include <QStyle>
#include <QStyleOptionButton>

RequestViewDelegate::RequestViewDelegate(QObject* parent) : QItemDelegate(parent) {}

void RequestViewDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QItemDelegate::paint(painter, option, index);
}

QSize RequestViewDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    return QItemDelegate::sizeHint(option, index);
}

void RequestViewDelegate::drawCheckbox(QPainter* painter, const QStyleOptionViewItem& option, int status) const
{
    QStyleOptionButton box;
    const QStyle* style = QApplication::style();
    const int width = style->pixelMetric(QStyle::PM_IndicatorWidth, &box);
    const int height = style->pixelMetric(QStyle::PM_IndicatorHeight, &box);
    box.rect = QRect(option.rect.left() + 5, option.rect.top() + (option.rect.height() - height) / 2, width, height);
    box.fontMetrics = option.fontMetrics;
    box.state = option.state;
    box.palette = option.palette;
    const bool confirmed = status == vorandel::PASS_REQUEST_STATE_CONFIRMED
        || status == vorandel::PASS_REQUEST_STATE_CONFIRMED_ALT;
    box.state |= confirmed ? QStyle::State_On : QStyle::State_Off;
    box.state &= confirmed ? ~QStyle::State_Off : ~QStyle::State_On;
    style->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &box, painter, nullptr);
}
