#include "requestview.h"

#include "requestview_p.h"
#include "ui_requestview.h"

#include "authdata.h"
#include "constants.h"
#include "localstorage.h"
#include "requestmodel.h"
#include "requestviewlogging.h"
#include "tabbeddialog.h"
#include "vd5sdkdata.h"
#include "vddatastream.h"

#include <QDate>

using namespace vorandel;
using namespace requestview::detail;

// --- confirmation and rejection --------------------------------------------------------------

QList<TYPE_ID> RequestView::selectedRequestUids() const
{
    QList<TYPE_ID> uids;
    const QItemSelectionModel* selection = ui->tblRequests->selectionModel();
    if (!selection)
        return uids;
    const QModelIndexList rows = selection->selectedRows(0);
    for (const QModelIndex& row : rows) {
        const TYPE_ID uid = row.sibling(row.row(), ColumnUid).data(Qt::DisplayRole).toUInt();
        if (uid != 0 && !uids.contains(uid))
            uids.append(uid);
    }
    return uids;
}

namespace {
// The approvers still to decide, in the order of the chain: the chain sorted by priority
// without as many from its front as have confirmed. Confirmations are counted, not matched.
QList<INHERIT_DATA> remainingApprovers(const ObjectInfo& request)
{
    // The table's column of the confirmer reads the same chain, so both agree on whose turn it is.
    return RequestModel::confirmChain(request).mid(request.inherits.count(INHERIT_CONFIRMED_LIST_PASS_REQUEST));
}

// A decision of the approver at the head of the chain.
INHERIT_DATA decision(const INHERIT_DATA& head, unsigned int type)
{
    return INHERIT_DATA(head.first, head.second, type, head.priority);
}

// A request with nothing but a new state.
ObjectInfo withState(const ObjectInfo& request, PassRequestState state)
{
    ObjectInfo object;
    object.uid = request.uid;
    object.type = request.type;
    object.parameters.insert(db::pass_request::STATE, QString::number(state));
    return object;
}
}  // namespace

void RequestView::confirmRequest(TYPE_ID uid)
{
    const QList<TYPE_ID> uids = uid != 0 ? QList<TYPE_ID>{uid} : selectedRequestUids();
    const OBJECT_HASH* requests = LocalStorage::instance()->constObjects(PASS_REQUEST_DATANAME);
    QList<INHERIT_DATA> inherits;
    QList<ObjectInfo> objects;
    for (const TYPE_ID requestUid : uids) {
        const ObjectInfo request = requests ? requests->value(requestUid) : ObjectInfo();
        const bool hasChain = request.inherits.contains(INHERIT_CONFIRM_LIST_PASS_REQUEST);
        if (!hasChain) {
            // Without approvers the tab decides; a request someone confirmed is left alone.
            if (!request.inherits.contains(INHERIT_CONFIRMED_LIST_PASS_REQUEST)
                && request.parameters.value(db::pass_request::STATE).toInt() == PASS_REQUEST_STATE_NOT_CONFIRMED)
                objects.append(withState(request, PASS_REQUEST_STATE_CONFIRMED));
            continue;
        }
        const QList<INHERIT_DATA> remaining = remainingApprovers(request);
        if (remaining.isEmpty() || remaining.first().second != AuthData::userId())
            continue;
        inherits.append(decision(remaining.first(), INHERIT_CONFIRMED_LIST_PASS_REQUEST));
    }
    if (inherits.isEmpty() && objects.isEmpty()) {
        showPopupInformationMessage(tr("Нет заявок для согласования"), 0);
        return;
    }
    if (!inherits.isEmpty())
        d->dataService->addObjectInherits(inherits, bind(&RequestView::requestConfirmed));
    for (const ObjectInfo& object : qAsConst(objects))
        d->dataService->updateObjectEx(object, bind(&RequestView::requestConfirmed));
}

void RequestView::rejectRequest(TYPE_ID uid)
{
    const QList<TYPE_ID> uids = uid != 0 ? QList<TYPE_ID>{uid} : selectedRequestUids();
    const OBJECT_HASH* requests = LocalStorage::instance()->constObjects(PASS_REQUEST_DATANAME);
    QList<INHERIT_DATA> inherits;
    QList<ObjectInfo> objects;
    for (const TYPE_ID requestUid : uids) {
        const ObjectInfo request = requests ? requests->value(requestUid) : ObjectInfo();
        qCDebug(rvc) << "Request info is" << request << "and params are" << request.parameters
                     << "parent params are" << request.inherits;
        if (request.inherits.contains(INHERIT_REJECTED_LIST_PASS_REQUEST))
            continue;
        const QList<INHERIT_DATA> remaining = remainingApprovers(request);
        if (!remaining.isEmpty()) {
            if (remaining.first().second == AuthData::userId())
                inherits.append(decision(remaining.first(), INHERIT_REJECTED_LIST_PASS_REQUEST));
            continue;
        }
        // No chain, or one walked to its end: the tab stops the request itself, from any state.
        objects.append(withState(request, PASS_REQUEST_STATE_REJECTED));
        qCDebug(rvc) << "Rejecting request number" << request.uid;
        dismissLinkedIfNecessary(request.uid);
    }
    if (inherits.isEmpty() && objects.isEmpty()) {
        showPopupInformationMessage(tr("Нет заявок для отклонения"), 0);
        return;
    }
    d->dataService->addObjectInherits(inherits, bind(&RequestView::requestRejected));
    for (const ObjectInfo& object : qAsConst(objects))
        d->dataService->updateObjectEx(object, bind(&RequestView::requestRejected));
}

void RequestView::requestConfirmed(Command& command)
{
    if (command.status == Command::StatusOk)
        showPopupInformationMessage(tr("Заявки подтверждены успешно"), 0);
    else
        showPopupCriticalMessage(tr("Ошибка подтверждения заявок"), 0);
}

void RequestView::requestRejected(Command& command)
{
    if (command.status == Command::StatusOk)
        showPopupInformationMessage(tr("Заявки отклонены успешно"), 0);
    else
        showPopupCriticalMessage(tr("Ошибка отклонения заявок"), 0);
}

TYPE_ID RequestView::getLinkedWorker(TYPE_ID uid)
{
    const ObjectInfo& request = LocalStorage::instance()->constObject(uid, PASS_REQUEST_DATANAME);
    qCDebug(rvc) << "Request id is" << uid << "info" << request << "and params" << request.parameters;
    if (request.parameters.value(db::pass_request::DISMISS_LINKED, QStringLiteral("false")) != QLatin1String("true"))
        return 0;
    const auto subject = request.parameters.constFind(KeySubject);
    if (subject == request.parameters.cend())
        return 0;
    return TYPE_ID(subject.value().toInt());
}

void RequestView::dismissLinkedIfNecessary(TYPE_ID uid)
{
    const TYPE_ID worker = getLinkedWorker(uid);
    if (worker == 0) {
        qCDebug(rvc) << "Linked employee id doesn't found";
        return;
    }
    const ObjectInfo& record = LocalStorage::instance()->constObject(worker, SUBJECT_DATANAME);
    if (record.parameters.isEmpty() || record.parameters.value(KeyObjectState) == QLatin1String("d")) {
        qCDebug(rvc) << "Linked employee are already dismissed";
        return;
    }
    qCDebug(rvc) << "Trying dismissed linked" << worker << record.parameters;
    d->dataService->dismissWorker(worker, QDate::currentDate(), bind(&RequestView::onLinkedWorkerDismiss));
}

void RequestView::onLinkedWorkerDismiss(Command& command)
{
    if (command.status != Command::StatusOk)
        qCWarning(rvc) << "Problems with worker dismissing" << command.status;
}

void RequestView::generateCard(ObjectInfo card_info)
{
    qCDebug(rvc) << "Trying to generate card" << card_info << ot_card::uid(card_info);
    d->dataService->updateWorkerCards(ot_card::uid(card_info), {card_info}, {}, false,
                                      bind(&RequestView::updateWorkerCardsHandler));
}

void RequestView::sendEmail(EMAIL_MESSAGE email)
{
    qCDebug(rvc) << "send email" << email.to << email.subject;
    Command command = newCommand();
    command.name = QStringLiteral("send_email");
    command.type = 8;
    VDDataStream out(&command.data, QIODevice::WriteOnly);
    out << email << AuthData::user();
    sendQuery(command, bind(&RequestView::sendEmailHandler));
}

void RequestView::sendEmailHandler(Command& command)
{
    if (!d->propertiesDialog)
        return;
    if (command.status == Command::StatusOk)
        d->propertiesDialog->showMessage(tr("Сообщение успешно добавлено в очередь отправки"));
    else
        d->propertiesDialog->showCriticalMessage(tr("Ошибка отправки email сообщения, статус %1").arg(command.status));
}
