#include "messagewidget.h"

#include "vdguiglobals.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QLayout>
#include <QPainter>
#include <QStyle>
#include <QTimer>

namespace {
constexpr int IconExtent = 24;
constexpr qreal CornerRadius = 6;

QIcon iconOf(MessageWidget::Icon icon, const QStyle* style)
{
    switch (icon) {
    case MessageWidget::Information:
        return QIcon::fromTheme(QStringLiteral("common-info"), style->standardIcon(QStyle::SP_MessageBoxInformation));
    case MessageWidget::Warning:
        return QIcon::fromTheme(QStringLiteral("common-warning"), style->standardIcon(QStyle::SP_MessageBoxWarning));
    case MessageWidget::Critical:
        return QIcon::fromTheme(QStringLiteral("common-cancel"), style->standardIcon(QStyle::SP_MessageBoxCritical));
    case MessageWidget::Success:
        return QIcon::fromTheme(QStringLiteral("common-online"), style->standardIcon(QStyle::SP_DialogApplyButton));
    }
    return {};
}

// The grounds of the event categories, which the operator already reads as these four moods.
QColor groundOf(MessageWidget::Icon icon)
{
    switch (icon) {
    case MessageWidget::Success:
        return VDGuiGlobals::eventCategoryColor(1);
    case MessageWidget::Information:
        return VDGuiGlobals::eventCategoryColor(2);
    case MessageWidget::Warning:
        return VDGuiGlobals::eventCategoryColor(3);
    case MessageWidget::Critical:
        return VDGuiGlobals::eventCategoryColor(4);
    }
    return VDGuiGlobals::eventCategoryColor(2);
}
}  // namespace

MessageWidget::MessageWidget(const QString& text, Icon icon, QWidget* parent)
    : QFrame(parent), m_icon(icon), m_text(new QLabel(text, this)), m_timer(new QTimer(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setCursor(Qt::PointingHandCursor);
    setToolTip(tr("Нажмите, чтобы закрыть"));

    auto* picture = new QLabel(this);
    picture->setPixmap(iconOf(icon, style()).pixmap(IconExtent, IconExtent));

    // The ground is pale whatever the palette, so the text keeps a dark colour of its own.
    m_text->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    QPalette textPalette = m_text->palette();
    textPalette.setColor(QPalette::WindowText, VDGuiGlobals::titleColor());
    m_text->setPalette(textPalette);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 8, 14, 8);
    layout->setSpacing(10);
    layout->addWidget(picture, 0, Qt::AlignTop);
    layout->addWidget(m_text, 1);

    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, &QWidget::close);
}

QString MessageWidget::text() const
{
    return m_text->text();
}

void MessageWidget::popup(int msecs)
{
    m_timer->setInterval(msecs > 0 ? msecs : defaultDuration(text()));
    show();
    raise();
    m_timer->start();
}

int MessageWidget::defaultDuration(const QString& text)
{
    // About the pace of a careful reader, with a floor for a glance and a ceiling so that a long
    // text does not linger over the work.
    constexpr int Floor = 3000;
    constexpr int PerCharacter = 60;
    constexpr int Ceiling = 12000;
    return qBound(Floor, 1500 + PerCharacter * int(text.size()), Ceiling);
}

QSize MessageWidget::sizeHint() const
{
    const QMargins margins = layout()->contentsMargins();
    const int width = margins.left() + IconExtent + layout()->spacing()
        + m_text->fontMetrics().horizontalAdvance(text()) + 2 * m_text->margin() + margins.right() + 1;
    return {width, heightForWidth(width)};
}

void MessageWidget::paintEvent(QPaintEvent*)
{
    const QColor ground = groundOf(m_icon);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(ground.darker(125), 1));
    painter.setBrush(ground);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), CornerRadius, CornerRadius);
}

void MessageWidget::mousePressEvent(QMouseEvent*)
{
    close();
}

// The note waits while the pointer rests on it, and gets its full time again afterwards.
void MessageWidget::enterEvent(QEvent*)
{
    m_timer->stop();
}

void MessageWidget::leaveEvent(QEvent*)
{
    if (isVisible())
        m_timer->start();
}
