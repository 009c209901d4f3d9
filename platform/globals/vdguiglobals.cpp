#include "vdguiglobals.h"

#include <QBuffer>
#include <QCoreApplication>

QPointer<QWidget> VDGuiGlobals::vdApp;

QString VDGuiGlobals::passRequestStateName(vorandel::PassRequestState state)
{
    switch (state) {
    case vorandel::PASS_REQUEST_STATE_NOT_CONFIRMED:
        return QCoreApplication::translate("VDGuiGlobals", "Не подтверждена");
    case vorandel::PASS_REQUEST_STATE_REJECTED:
        return QCoreApplication::translate("VDGuiGlobals", "Отклонена");
    case vorandel::PASS_REQUEST_STATE_CONFIRMED:
        return QCoreApplication::translate("VDGuiGlobals", "Подтверждена");
    case vorandel::PASS_REQUEST_STATE_CONFIRMED_ALT:
        return QCoreApplication::translate("VDGuiGlobals", "Подтверждена сервером");
    case vorandel::PASS_REQUEST_STATE_ACTIVE:
        return QCoreApplication::translate("VDGuiGlobals", "Действует");
    case vorandel::PASS_REQUEST_STATE_FINISHED:
        return QCoreApplication::translate("VDGuiGlobals", "Завершена");
    }
    return QCoreApplication::translate("VDGuiGlobals", "Неизвестный статус (%1)").arg(int(state));
}

QColor VDGuiGlobals::eventCategoryColor(unsigned int category)
{
    switch (category) {
    case 1:
        return QColor(0xdf, 0xf5, 0xe1);
    case 2:
        return QColor(0xe1, 0xee, 0xfb);
    case 3:
        return QColor(0xfd, 0xf3, 0xd4);
    case 4:
        return QColor(0xfb, 0xe0, 0xe0);
    default:
        return {};
    }
}

QColor VDGuiGlobals::titleColor()
{
    return QColor(0x33, 0x3f, 0x4f);
}

QImage VDGuiGlobals::imageFromDB(const QByteArray& data)
{
    if (data.isEmpty())
        return {};
    QImage image;
    const QByteArray raw = QByteArray::fromHex(data);
    if (!raw.isEmpty() && image.loadFromData(raw))
        return image;
    image.loadFromData(data);
    return image;
}

QByteArray VDGuiGlobals::imageToDB(const QImage& image, int quality)
{
    if (image.isNull())
        return {};
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPG", quality);
    return bytes.toHex();
}
