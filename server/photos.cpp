#include "photos.h"

#include "vdguiglobals.h"

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QPainterPath>

namespace vdserver {

namespace {
const QSize PhotoSize(240, 300);
const QSize PreviewSize(48, 60);

QString initials(const vorandel::ObjectInfo& worker)
{
    const QString surname = worker.parameters.value(QStringLiteral("PT_SURNAME"));
    const QString name = worker.parameters.value(QStringLiteral("PT_NAME"));
    return (surname.left(1) + name.left(1)).toUpper();
}

bool looksFemale(const vorandel::ObjectInfo& worker)
{
    return worker.parameters.value(QStringLiteral("PT_PATRONYMIC")).endsWith(QStringLiteral("на"));
}
}  // namespace

QImage Photos::portrait(const vorandel::ObjectInfo& worker, const QSize& size)
{
    // Neighbouring uids should not get neighbouring colours.
    const quint32 mix = worker.uid * 2654435761u;
    const int hue = int(mix % 360);
    const QColor background = QColor::fromHsv(hue, 38, 238);
    const QColor clothes = QColor::fromHsv((hue + 150 + int(mix >> 9) % 60) % 360, 90, 120);
    const QColor skin = QColor::fromHsv(20 + int(mix >> 12) % 12, 70 + int(mix >> 16) % 50, 215);
    const QColor hair = QColor::fromHsv(25, 120, 40 + int(mix >> 20) % 120);

    QImage image(size, QImage::Format_RGB32);
    image.fill(background);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);

    const qreal w = size.width();
    const qreal h = size.height();
    const QRectF head(w * 0.31, h * 0.17, w * 0.38, h * 0.36);
    if (looksFemale(worker)) {
        painter.setBrush(hair);
        painter.drawRoundedRect(head.adjusted(-w * 0.05, -h * 0.03, w * 0.05, h * 0.14), w * 0.2, w * 0.2);
    }
    painter.setBrush(clothes);
    painter.drawEllipse(QRectF(w * 0.08, h * 0.64, w * 0.84, h * 0.62));
    painter.setBrush(skin.darker(110));
    painter.drawRect(QRectF(w * 0.43, h * 0.48, w * 0.14, h * 0.18));
    painter.setBrush(skin);
    painter.drawEllipse(head);
    painter.setBrush(hair);
    QPainterPath cap;
    cap.moveTo(head.left(), head.center().y());
    cap.arcTo(head, 180, -180);
    cap.quadTo(head.center().x(), head.top() + head.height() * 0.2, head.left(), head.center().y());
    painter.drawPath(cap);

    QFont font;
    font.setBold(true);
    font.setPixelSize(qMax(6, int(h * 0.11)));
    painter.setFont(font);
    painter.setPen(QColor(255, 255, 255, 220));
    painter.drawText(QRectF(0, h * 0.76, w, h * 0.18), Qt::AlignCenter, initials(worker));
    return image;
}

QByteArray Photos::photo(const vorandel::ObjectInfo& worker)
{
    return VDGuiGlobals::imageToDB(portrait(worker, PhotoSize), 85);
}

QString Photos::preview(const vorandel::ObjectInfo& worker)
{
    return QString::fromLatin1(VDGuiGlobals::imageToDB(portrait(worker, PreviewSize), 60));
}

}  // namespace vdserver
