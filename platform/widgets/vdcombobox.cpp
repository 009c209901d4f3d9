#include "vdcombobox.h"

#include <QEvent>
#include <QLineEdit>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QStylePainter>
#include <QToolButton>

VDComboBox::VDComboBox(QWidget* parent) : QComboBox(parent)
{
    connect(this, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &VDComboBox::updateClearButton);
}

VDComboBox::~VDComboBox() = default;

void VDComboBox::showClearButton(bool show)
{
    m_clearWanted = show;
    if (show && !m_clear) {
        m_clear = new QToolButton(this);
        m_clear->setObjectName(QStringLiteral("clearButton"));
        m_clear->setAutoRaise(true);
        m_clear->setFocusPolicy(Qt::NoFocus);
        m_clear->setIcon(style()->standardIcon(QStyle::SP_LineEditClearButton, nullptr, this));
        m_clear->setToolTip(tr("Очистить"));
        m_clear->setCursor(Qt::ArrowCursor);
        connect(m_clear, &QToolButton::clicked, this, &VDComboBox::clearSelection);
    }
    placeClearButton();
    updateClearButton();
}

bool VDComboBox::hasChoice() const
{
    return currentIndex() >= 0;
}

void VDComboBox::clearSelection()
{
    setCurrentIndex(-1);
}

void VDComboBox::updateClearButton()
{
    if (!m_clear)
        return;
    const bool show = m_clearWanted && hasChoice() && isEnabled();
    m_clear->setVisible(show);
    if (QLineEdit* edit = lineEdit())
        edit->setTextMargins(0, 0, show ? m_clear->width() : 0, 0);
    update();
}

void VDComboBox::initLabel(QStyleOptionComboBox*) const {}

void VDComboBox::paintEvent(QPaintEvent* event)
{
    if (isEditable())
        return QComboBox::paintEvent(event);
    QStylePainter painter(this);
    painter.setPen(palette().color(QPalette::Text));
    QStyleOptionComboBox option;
    initStyleOption(&option);
    initLabel(&option);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    // The text stops short of the clear button, with an ellipsis where it has to.
    const QRect field = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    const int iconSpace = option.currentIcon.isNull() ? 0 : option.iconSize.width() + 4;
    const int room = textRect().width() - iconSpace - 2 - (field.width() - textRect().width() > 0 ? 2 : 0);
    if (option.currentText.isEmpty() && currentIndex() < 0 && !placeholderText().isEmpty()) {
        option.currentText = placeholderText();
        option.palette.setBrush(QPalette::ButtonText, option.palette.placeholderText());
        option.palette.setBrush(QPalette::Text, option.palette.placeholderText());
    }
    option.currentText = fontMetrics().elidedText(option.currentText, Qt::ElideRight, qMax(0, room));
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

void VDComboBox::resizeEvent(QResizeEvent* event)
{
    QComboBox::resizeEvent(event);
    placeClearButton();
}

void VDComboBox::changeEvent(QEvent* event)
{
    QComboBox::changeEvent(event);
    if (event->type() == QEvent::EnabledChange)
        updateClearButton();
}

QRect VDComboBox::textRect() const
{
    QStyleOptionComboBox option;
    initStyleOption(&option);
    QRect field = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    if (m_clear && m_clear->isVisible())
        field.setRight(m_clear->geometry().left() - 1);
    return field;
}

void VDComboBox::placeClearButton()
{
    if (!m_clear)
        return;
    // At the right end of the field, just left of the arrow.
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRect field = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    const int side = qMin(field.height(), 20);
    m_clear->setIconSize(QSize(side - 6, side - 6));
    m_clear->setGeometry(field.right() - side + 1, field.top() + (field.height() - side) / 2, side, side);
}
