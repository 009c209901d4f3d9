#include "hiddenpanel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

HiddenPanel::HiddenPanel(QWidget* parent)
    : QFrame(parent),
      m_titleBar(new QWidget(this)),
      m_title(new QLabel(m_titleBar)),
      m_fold(new QToolButton(m_titleBar)),
      m_content(new QWidget(this)),
      m_contentLayout(new QVBoxLayout(m_content))
{
    QFont titleFont = m_title->font();
    titleFont.setBold(true);
    m_title->setFont(titleFont);

    m_fold->setAutoRaise(true);
    m_fold->setArrowType(Qt::UpArrow);
    m_fold->setToolTip(tr("Свернуть"));
    connect(m_fold, &QToolButton::clicked, this, [this] { setCollapsed(!isCollapsed()); });

    auto* titleLayout = new QHBoxLayout(m_titleBar);
    titleLayout->setContentsMargins(6, 2, 2, 2);
    titleLayout->addWidget(m_title, 1);
    titleLayout->addWidget(m_fold);

    m_contentLayout->setContentsMargins(0, 0, 0, 0);
    m_contentLayout->setSpacing(0);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_titleBar);
    layout->addWidget(m_content, 1);
}

HiddenPanel::~HiddenPanel() = default;

void HiddenPanel::setTitle(const QString& title)
{
    m_title->setText(title);
}

QString HiddenPanel::title() const
{
    return m_title->text();
}

void HiddenPanel::setTitleVisible(bool visible)
{
    m_titleBar->setVisible(visible);
}

bool HiddenPanel::isTitleVisible() const
{
    return !m_titleBar->isHidden();
}

void HiddenPanel::addWidget(QWidget* widget)
{
    m_contentLayout->addWidget(widget);
}

void HiddenPanel::setCollapsed(bool collapsed)
{
    if (collapsed == isCollapsed())
        return;
    m_content->setVisible(!collapsed);
    m_fold->setArrowType(collapsed ? Qt::DownArrow : Qt::UpArrow);
    m_fold->setToolTip(collapsed ? tr("Развернуть") : tr("Свернуть"));
    emit collapsedChanged(collapsed);
}

bool HiddenPanel::isCollapsed() const
{
    return m_content->isHidden();
}

QSize HiddenPanel::sizeHint() const
{
    constexpr int PreferredWidth = 360;
    const QSize hint = QFrame::sizeHint();
    return isCollapsed() ? hint : QSize(qMax(hint.width(), PreferredWidth), hint.height());
}
