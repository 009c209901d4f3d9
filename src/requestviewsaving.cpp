#include "requestview.h"

#include "requestview_p.h"

#include "constants.h"
#include "localstorage.h"
#include "orgstructureselectiondialog.h"
#include "requestviewlogging.h"
#include "tabbeddialog.h"
#include "vd5sdkdata.h"
#include "vddatastream.h"
#include "vdglobals.h"
#include "vdguiglobals.h"
#include "workeraccessview.h"
#include "workercardview.h"
#include "workerjobview.h"
#include "workerpropertyview.h"

#include <QMessageBox>

#include <algorithm>

using namespace vorandel;
using namespace requestview::detail;

namespace {

const QString SaveObject = QStringLiteral("save_object");

// A "save_object" task of these changed fields of an object.
TaskInfo saveTask(TYPE_ID uid, const QString& type, TYPE_ID parent, const QHash<QString, QString>& fields)
{
    TaskInfo task;
    task.uid = uid;
    task.type = SaveObject;
    task.params.insert(QStringLiteral("object_type"), type);
    task.params.insert(QStringLiteral("parent"), parent);
    const QList<QString> keys = fields.uniqueKeys();
    for (const QString& key : keys)
        task.params.insert(QStringLiteral("property-") + key, fields.value(key));
    return task;
}

// The access groups of a worker in the order the view keeps them: those given first, then those
// the operator added. A multi-hash hands a key's values out newest first.
QStringList groupsInOrder(const QMultiHash<unsigned int, unsigned int>& accesses, TYPE_ID worker)
{
    QList<unsigned int> groups = accesses.values(worker);
    std::reverse(groups.begin(), groups.end());
    QStringList texts;
    for (const unsigned int group : qAsConst(groups))
        texts.append(QString::number(group));
    return texts;
}

// Adds the changes of one worker tab to those of the tabs before it. The fields of a later tab
// win. Every tab reports the worker under the parent he has, except the one that moves him to
// another unit: that parent wins too.
void mergeChanges(OBJECT_HASH& into, const OBJECT_HASH& from)
{
    for (auto incoming = from.cbegin(); incoming != from.cend(); ++incoming) {
        const auto target = into.find(incoming.key());
        if (target == into.end()) {
            into.insert(incoming.key(), incoming.value());
            continue;
        }
        const QHash<QString, QString>& fields = incoming.value().parameters;
        for (auto field = fields.cbegin(); field != fields.cend(); ++field)
            target->parameters.insert(field.key(), field.value());
        const TYPE_ID storedParent = LocalStorage::instance()->constObject(incoming.key(), SUBJECT_DATANAME).parent;
        if (incoming.value().parent != storedParent)
            target->parent = incoming.value().parent;
    }
}

}  // namespace

// --- saving a request and its worker ----------------------------------------------------------

void RequestView::sendSaveRequest(TYPE_ID uid, QString type, TYPE_ID parent, QHash<QString, QString> parameters)
{
    QHash<QString, QString> changes = parameters;
    if (d->propertiesDialog) {
        const auto* access = qobject_cast<WorkerAccessView*>(d->propertiesDialog->tabWidget(3));
        const QStringList groups = access ? groupsInOrder(access->accesses(), d->currentWorker) : QStringList();
        const ObjectInfo request = d->requests ? d->requests->value(uid) : ObjectInfo();
        const QString way = groups.join(QLatin1Char(';'));
        // The same groups in another order count as a change.
        if (request.uid == 0 || request.parameters.value(KeyWay).split(QLatin1Char(';'), Qt::SkipEmptyParts) != groups)
            changes.insert(KeyWay, way);
    }
    if (changes.isEmpty()) {
        emit requestSaved(uid);
        return;
    }
    TaskInfo task = saveTask(uid, type, parent, changes);
    const QString name = VDGlobals::objectName(db::misc::PASS_REQUEST, changes);
    task.message = tr("Сохранение параметров заявки %1").arg(name);
    task.errorMessage = tr("Ошибка сохранения параметров заявки %1").arg(name);
    addTask(task);
}

void RequestView::saveRequestWorker()
{
    TabbedDialog* dialog = d->propertiesDialog;
    if (!dialog || dialog->tabCount() != 5)
        return;
    const auto* person = qobject_cast<WorkerPropertyView*>(dialog->tabWidget(1));
    const auto* job = qobject_cast<WorkerJobView*>(dialog->tabWidget(2));
    const auto* access = qobject_cast<WorkerAccessView*>(dialog->tabWidget(3));
    const auto* cards = qobject_cast<WorkerCardView*>(dialog->tabWidget(4));
    if (!person || !job || !access || !cards)
        return;

    OBJECT_HASH changed = person->changedObjects();
    mergeChanges(changed, job->changedObjects());
    mergeChanges(changed, access->changedObjects());
    mergeChanges(changed, cards->changedObjects());

    const QList<unsigned int> uids = changed.uniqueKeys();
    for (const unsigned int uid : uids) {
        const ObjectInfo& object = changed.constValue(uid);
        TaskInfo task = saveTask(uid, object.type, object.parent, object.parameters);
        const QString objectName = VDGlobals::objectName(object.type, person->currentObject().parameters);
        task.message = tr("Сохранение параметров сотрудника %1").arg(objectName);
        task.errorMessage = tr("Ошибка сохранения параметров сотрудника %1").arg(objectName);
        addTask(task);
    }
}

void RequestView::sendAddWorker(TYPE_ID uid, QHash<QString, QString> parameters)
{
    OrgstructureSelectionDialog units(this);
    if (units.exec() != QDialog::Accepted)
        return;
    ObjectInfo worker;
    worker.uid = uid;
    worker.type = db::orgstructure::WORKER;
    worker.parent = units.selected();
    worker.parameters = parameters;
    if (uid != 0)
        d->dataService->updateObjectEx(worker, bind(&RequestView::workerAdded));
    else
        d->dataService->addObject(worker, bind(&RequestView::workerAdded));
}

void RequestView::sendUpdateWorker(TYPE_ID uid, TYPE_ID parent, QHash<QString, QString> parameters)
{
    ObjectInfo worker;
    worker.uid = uid;
    worker.type = db::orgstructure::WORKER;
    worker.parent = parent;
    worker.parameters = parameters;
    d->dataService->updateObjectEx(worker, bind(&RequestView::workerUpdated));
}

void RequestView::saveAddedCards(QList<CARD_ID> cards)
{
    if (cards.isEmpty())
        return;
    const CARD_ID number = cards.first();
    const ObjectInfo card = LocalStorage::instance()->card(number, false);
    const OBJECT_HASH* subjects = LocalStorage::instance()->constObjects(SUBJECT_DATANAME);
    const TYPE_ID holderUid = ot_card::uid(card);
    const ObjectInfo holder = subjects ? subjects->value(holderUid) : ObjectInfo();
    const ObjectInfo worker = subjects ? subjects->value(d->currentWorker) : ObjectInfo();
    if (holderUid == d->currentWorker || !holder.isValid())
        return;
    // Only a notice: whatever the answer, the card is left where it is.
    QMessageBox::warning(VDGuiGlobals::vdApp, tr("Предупреждение"),
                         tr("Карта %1 уже назначена %2.\nПереназначить карту %3?")
                             .arg(number)
                             .arg(VDGlobals::objectName(db::orgstructure::WORKER, holder.parameters),
                                  VDGlobals::objectName(db::orgstructure::WORKER, worker.parameters)),
                         QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
}

void RequestView::saveRemovedCards(QList<TYPE_ID>) {}

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
