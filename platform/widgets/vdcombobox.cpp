#include "vdcombobox.h"

#include <QStyle>
#include <QStyleOptionComboBox>
#include <QToolButton>

VDComboBox::VDComboBox(QWidget* parent) : QComboBox(parent) {}

VDComboBox::~VDComboBox() = default;

void VDComboBox::showClearButton(bool show)
{
    if (show && !m_clear) {
        m_clear = new QToolButton(this);
        m_clear->setObjectName(QStringLiteral("clearButton"));
        m_clear->setAutoRaise(true);
        m_clear->setFocusPolicy(Qt::NoFocus);
        m_clear->setText(QStringLiteral("×"));
        m_clear->setToolTip(tr("Очистить"));
        m_clear->setCursor(Qt::ArrowCursor);
        connect(m_clear, &QToolButton::clicked, this, &VDComboBox::clearSelection);
    }
    if (m_clear) {
        m_clear->setVisible(show);
        placeClearButton();
    }
}

bool VDComboBox::isClearButtonShown() const
{
    return m_clear && !m_clear->isHidden();
}

void VDComboBox::clearSelection()
{
    setCurrentIndex(-1);
}

void VDComboBox::resizeEvent(QResizeEvent* event)
{
    QComboBox::resizeEvent(event);
    placeClearButton();
}

void VDComboBox::placeClearButton()
{
    if (!m_clear)
        return;
    // Just left of the arrow, inside the field.
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRect field = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    const int side = field.height();
    m_clear->setGeometry(field.right() - side + 1, field.top(), side, side);
}
