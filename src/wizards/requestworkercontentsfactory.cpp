#include "requestworkercontentsfactory.h"

#include "constants.h"
#include "localstorage.h"
#include "vdglobals.h"
#include "vdguiglobals.h"

#include <QApplication>
#include <QFontMetrics>
#include <QIcon>

using namespace vorandel;

RequestWorkerContentsFactory::~RequestWorkerContentsFactory() = default;

QString RequestWorkerContentsFactory::text(unsigned int uid) const
{
    const LocalStorage* store = LocalStorage::instance();
    const ObjectInfo& worker = store->constObject(uid, SUBJECT_DATANAME);
    const ObjectInfo& department = store->constObject(worker.parent, ORGSTRUCTURE_DATANAME);
    const QFontMetrics metrics(QApplication::font());
    const QString name = metrics.elidedText(VDGlobals::objectName(worker), Qt::ElideRight, 400);
    const QString place =
        metrics.elidedText(department.parameters.value(QStringLiteral("PT_NAME")), Qt::ElideRight, 250);
    return QApplication::translate("QApplication",
                                   "<div align=left><b>%1</b></div><div align=left>т.н. %2</div>"
                                   "<div align=left><i>%3</i></div>")
        .arg(name.toHtmlEscaped(), worker.parameters.value(QStringLiteral("PT_WORKERNUM")).toHtmlEscaped(),
             place.toHtmlEscaped());
}

QPixmap RequestWorkerContentsFactory::pixmap(unsigned int uid) const
{
    const LocalStorage* store = LocalStorage::instance();
    if (store->constObjects(SUBJECT_DATANAME)) {
        const QString preview =
            store->constObject(uid, SUBJECT_DATANAME).parameters.value(QStringLiteral("PT_PHOTO_PREVIEW"));
        // The preview is stored as hexadecimal text of the picture.
        const QImage image = VDGuiGlobals::imageFromDB(QByteArray::fromHex(preview.toLatin1()));
        if (!image.isNull())
            return QPixmap::fromImage(image);
    }
    return QIcon::fromTheme(QStringLiteral("object-OT_WORKER")).pixmap(QSize(32, 32), QIcon::Disabled, QIcon::Off);
}
