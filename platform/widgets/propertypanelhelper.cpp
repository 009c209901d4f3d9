#include "propertypanelhelper.h"

#include "constants.h"
#include "vdguiglobals.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>

namespace {

// A photo on a card, in device-independent pixels: a portrait.
constexpr QSize PhotoSize(120, 150);
constexpr int LabelIconExtent = 16;
constexpr int LabelIconSpacing = 4;
// Transparent room around a label, so that labels set one after another stand apart.
constexpr int LabelMargin = 2;

// The application's font, `larger` points larger, in `weight`.
QFont cardFont(qreal larger, int weight)
{
    QFont font = QGuiApplication::font();
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() + larger);
    else
        font.setPixelSize(font.pixelSize() + qRound(larger * 4 / 3));
    font.setWeight(weight);
    return font;
}

QTextCharFormat formatWith(const QFont& font)
{
    QTextCharFormat format;
    format.setFont(font);
    return format;
}

// A transparent pixmap of `size` device-independent pixels, sharp on the screen.
QPixmap canvas(const QSize& size)
{
    const qreal ratio = qGuiApp ? qGuiApp->devicePixelRatio() : 1.0;
    QPixmap pixmap(size * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    return pixmap;
}

// A photo-sized grey silhouette for an object without a picture: head and shoulders for
// people, a plain block for anything else.
QPixmap placeholder(const QString& type)
{
    QPixmap pixmap = canvas(PhotoSize);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);

    const QRectF frame(QPointF(0, 0), PhotoSize);
    QPainterPath ground;
    ground.addRoundedRect(frame, 6, 6);
    painter.fillPath(ground, QColor(0xEE, 0xF0, 0xF3));

    const QColor figure(0xB8, 0xBE, 0xC7);
    const qreal w = frame.width();
    const qreal h = frame.height();
    if (type == db::orgstructure::WORKER || type == db::user::USER) {
        QPainterPath person;
        person.addEllipse(QPointF(w / 2, h * 0.36), w * 0.2, w * 0.2);
        person.addEllipse(QRectF(w * 0.14, h * 0.64, w * 0.72, h * 0.6));
        painter.fillPath(person.intersected(ground), figure);
    } else {
        QPainterPath block;
        block.addRoundedRect(QRectF(w * 0.25, h * 0.3, w * 0.5, h * 0.4), 6, 6);
        painter.fillPath(block, figure);
    }
    return pixmap;
}

}  // namespace

QTextCharFormat PropertyPanelHelper::titleformat()
{
    QTextCharFormat format = formatWith(cardFont(1, QFont::Bold));
    format.setForeground(VDGuiGlobals::titleColor());
    return format;
}

QTextCharFormat PropertyPanelHelper::textformat()
{
    return formatWith(cardFont(0, QFont::Normal));
}

QTextCharFormat PropertyPanelHelper::nameformat()
{
    return formatWith(cardFont(3, QFont::Bold));
}

QPixmap PropertyPanelHelper::pixmapByPhotoType(const QString& type, const QByteArray& data, bool scaled,
                                               const QString& fallbackPath)
{
    QImage image = VDGuiGlobals::imageFromDB(data);
    if (image.isNull() && !fallbackPath.isEmpty())
        image.load(fallbackPath);
    if (image.isNull())
        return placeholder(type);
    if (!scaled)
        return QPixmap::fromImage(image);
    const qreal ratio = qGuiApp ? qGuiApp->devicePixelRatio() : 1.0;
    QPixmap photo =
        QPixmap::fromImage(image.scaled(PhotoSize * ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    photo.setDevicePixelRatio(ratio);
    return photo;
}

QPixmap PropertyPanelHelper::createColoredText(const QIcon& icon, const QString& text, const QColor& textColor,
                                               const QColor& backColor, const QFont& font, int horizontalPadding,
                                               int verticalPadding)
{
    const QFontMetrics metrics(font);
    const QPixmap iconPixmap = icon.pixmap(LabelIconExtent, LabelIconExtent);
    const bool withIcon = !iconPixmap.isNull();
    const int iconWidth = withIcon ? LabelIconExtent + (text.isEmpty() ? 0 : LabelIconSpacing) : 0;
    const QSize label(2 * horizontalPadding + iconWidth + metrics.horizontalAdvance(text),
                      2 * verticalPadding + qMax(metrics.height(), withIcon ? LabelIconExtent : 0));

    QPixmap pixmap = canvas(label + QSize(2 * LabelMargin, 2 * LabelMargin));
    QPainter painter(&pixmap);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);

    const QRectF ground(QPointF(LabelMargin, LabelMargin), label);
    const qreal radius = qMin(6.0, ground.height() / 2);
    painter.setPen(Qt::NoPen);
    painter.setBrush(backColor);
    painter.drawRoundedRect(ground, radius, radius);

    qreal x = ground.left() + horizontalPadding;
    if (withIcon) {
        const QRectF target(x, ground.center().y() - LabelIconExtent / 2.0, LabelIconExtent, LabelIconExtent);
        painter.drawPixmap(target, iconPixmap, iconPixmap.rect());
        x += iconWidth;
    }
    painter.setPen(textColor);
    painter.setFont(font);
    painter.drawText(QRectF(x, ground.top(), ground.right() - horizontalPadding - x, ground.height()),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, text);
    return pixmap;
}
