#include "requestview.h"

#include "requestview_p.h"

#include "requestviewlogging.h"
#include "vddatastream.h"
#include "vdguiglobals.h"

#include <QMessageBox>

using namespace vorandel;
using namespace requestview::detail;

// --- saving a request and its worker ----------------------------------------------------------

void RequestView::workerAdded(Command& command)
{
    if (command.status != Command::StatusOk) {
        QMessageBox::critical(VDGuiGlobals::vdApp, tr("Ошибка"), tr("Ошибка сохранения сотрудника"), QMessageBox::Ok);
        return;
    }
    qint32 uid = 0;
    VDDataStream in(command.data);
    in >> uid;
    emit workerSaved(TYPE_ID(uid));
}

void RequestView::workerUpdated(Command& command)
{
    if (command.status != Command::StatusOk) {
        QMessageBox::critical(VDGuiGlobals::vdApp, tr("Ошибка"), tr("Ошибка сохранения сотрудника"), QMessageBox::Ok);
        return;
    }
    // The answer names the worker; the dialog learns of the save from the store, not from here.
    qint32 uid = 0;
    VDDataStream in(command.data);
    in >> uid;
}

void RequestView::requestUpdated(Command& command)
{
    if (command.status != Command::StatusOk) {
        QMessageBox::critical(VDGuiGlobals::vdApp, tr("Ошибка"), tr("Ошибка сохранения заявки"), QMessageBox::Ok);
        emit requestSaved(0);
        return;
    }
    qint32 uid = 0;
    VDDataStream in(command.data);
    in >> uid;
    emit requestSaved(TYPE_ID(uid));
}

void RequestView::workerCardsChanged(Command& command)
{
    VDDataStream in(command.data);
    if (command.status != Command::StatusOk) {
        QString text;
        in >> text;
        text.remove(QStringLiteral("error_db: "));
        QMessageBox::critical(VDGuiGlobals::vdApp, tr("Ошибка сохранения карты"), text, QMessageBox::Ok);
        return;
    }
    qint32 uid = 0;
    QString result;
    in >> uid >> result;
    if (result.isEmpty() || result == QLatin1String("ok"))
        return;
    const QString text = result == QLatin1String("exists")
        ? tr("Ошибка сохранения карты: данная карта уже присутствует в базу данных")
        : tr("Ошибка сохранения карты: неизвестная ошибка");
    QMessageBox::critical(VDGuiGlobals::vdApp, tr("Ошибка"), text, QMessageBox::Ok);
}
