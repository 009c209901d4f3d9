#include "requestview.h"

#include "requestview_p.h"

#include "authdata.h"
#include "constants.h"
#include "localstorage.h"
#include "requestviewlogging.h"
#include "tabbeddialog.h"
#include "vd5sdkdata.h"
#include "vddatastream.h"
#include "vdguiglobals.h"
#include "vdserverinterface.h"
#include "workeraccessview.h"
#include "workercardview.h"
#include "workerjobview.h"
#include "workerpropertyview.h"

#include <QMessageBox>

using namespace vorandel;
using namespace requestview::detail;

namespace {

// The notice that an access change is carried out, named for this session; it lives as long as
// an access task runs.
CommandType accessNotice()
{
    return CommandType(8, QStringLiteral("change_access_result:%1").arg(QString::fromLatin1(AuthData::sessionId().toHex())));
}

}  // namespace

// --- the task queue --------------------------------------------------------------------------

void RequestView::addTask(TaskInfo task)
{
    qCDebug(rvc) << "addTask" << task.uid << task.type << task.slot << task.params;
    d->taskQueue.tasks.append(task);
    if (d->taskQueue.tasks.size() == 1 && !d->taskQueue.suspended)
        d->taskQueue.processNext();
}

void RequestView::processNextTask()
{
    d->taskQueue.processNext();
}

void RequestView::reportSuccess(const TaskInfo& task)
{
    if (receiverSet(task))
        report(task, Q_ARG(vorandel::TYPE_ID, task.uid));
    else
        showPopupMessage(task.message, MessageWidget::Icon(0), 0);
}

void RequestView::reportFailure(const TaskInfo& task)
{
    if (receiverSet(task))
        report(task, Q_ARG(vorandel::TYPE_ID, 0));
    else
        showPopupCriticalMessage(task.errorMessage, 0);
}

namespace {
// The object that a "create_object" or "save_object" task describes.
ObjectInfo objectOfTask(const TaskInfo& task)
{
    static const QString Prefix = QStringLiteral("property-");
    ObjectInfo object;
    object.type = task.params.value(QStringLiteral("object_type")).toString();
    object.parent = task.params.value(QStringLiteral("parent")).toUInt();
    const QList<QString> keys = task.params.uniqueKeys();
    for (const QString& key : keys) {
        if (key.startsWith(Prefix, Qt::CaseSensitive))
            object.parameters.insert(QString(key).remove(Prefix), task.params.value(key).toString());
    }
    return object;
}

void logProcess(const TaskInfo& task)
{
    qCDebug(rvc) << "process task" << task.type << task.uid << task.params;
}
}  // namespace

bool RequestView::processCreateObject(const TaskInfo& task)
{
    logProcess(task);
    d->dataService->addObject(objectOfTask(task), bind(&RequestView::objectCreatedHandler));
    return true;
}

bool RequestView::processSaveObject(const TaskInfo& task)
{
    logProcess(task);
    ObjectInfo object = objectOfTask(task);
    object.uid = task.uid;
    d->dataService->updateObject(object, bind(&RequestView::objectSavedHandler));
    return true;
}

bool RequestView::processDeleted(const TaskInfo& task)
{
    ObjectInfo object;
    object.uid = task.uid;
    object.type = db::misc::PASS_REQUEST;
    d->dataService->removeObject(object, bind(&RequestView::requestRemoved));
    // At once, while the request is still in the store to tell whom to dismiss.
    dismissLinkedIfNecessary(task.uid);
    return true;
}

void RequestView::objectCreatedHandler(Command& command)
{
    const std::optional<TaskInfo> running = d->taskQueue.finishCurrent();
    if (!running)
        return;
    const TaskInfo& task = *running;
    if (command.status != Command::StatusOk) {
        qCWarning(rvc) << "fail create object";
        d->taskQueue.removeTasks(task);
        if (receiverSet(task))
            report(task, Q_ARG(vorandel::TYPE_ID, 0));
    } else {
        qint32 uid = 0;
        VDDataStream in(command.data);
        in >> uid;
        if (receiverSet(task))
            report(task, Q_ARG(vorandel::TYPE_ID, TYPE_ID(uid)));
        qCDebug(rvc) << "object created" << uid;
    }
    processNextTask();
}

void RequestView::objectSavedHandler(Command& command)
{
    const std::optional<TaskInfo> running = d->taskQueue.finishCurrent();
    if (!running)
        return;
    const TaskInfo& task = *running;
    if (command.status != Command::StatusOk) {
        qCWarning(rvc) << "fail save object";
        d->taskQueue.removeTasks(task);
        processNextTask();
        return;
    }
    const QString type = task.params.value(QStringLiteral("object_type")).toString();
    if (type == db::orgstructure::WORKER)
        emit workerSaved(task.uid);
    else if (type == db::misc::PASS_REQUEST)
        emit requestSaved(task.uid);
    qCDebug(rvc) << "object saved";

    TabbedDialog* dialog = d->propertiesDialog.data();
    const auto tab = [dialog](int index) { return dialog ? dialog->tabWidget(index) : nullptr; };
    auto* person = qobject_cast<WorkerPropertyView*>(tab(1));
    auto* job = qobject_cast<WorkerJobView*>(tab(2));
    auto* access = qobject_cast<WorkerAccessView*>(tab(3));
    auto* cards = qobject_cast<WorkerCardView*>(tab(4));
    // Without the whole dialog the queue waits here for the next answer to move it on.
    if (!person || !job || !access || !cards)
        return;
    person->saved(task.uid);
    job->saved(task.uid);
    access->saved(task.uid);
    cards->saved(task.uid);
    processNextTask();
}

void RequestView::requestRemoved(Command& command)
{
    const std::optional<TaskInfo> running = d->taskQueue.finishCurrent();
    if (!running)
        return;
    const TaskInfo& task = *running;
    if (command.status != Command::StatusOk) {
        qCWarning(rvc) << "fail delete object";
        d->taskQueue.removeTasks(task);
        reportFailure(task);
    } else {
        reportSuccess(task);
    }
    processNextTask();
}

bool RequestView::processChangeSubjectAccess(const TaskInfo& task)
{
    logProcess(task);
    const OBJECT_HASH* policies = LocalStorage::instance()->constObjects(POLICY_DATANAME);
    if (!policies)
        return false;
    const CommandType notice = accessNotice();
    registerCommandHandler(notice, bind(&RequestView::changeSubjectAccessFinishedHandler));
    server()->addCommandType(notice, this);
    server()->sendLocalPluginsInfo();

    ACCESS_CHANGES change;
    change.subject = task.uid;
    change.object = task.params.value(QStringLiteral("object")).toUInt();
    change.set_child = task.params.value(QStringLiteral("set_child")).toBool();
    change.state = task.params.value(QStringLiteral("state")).toBool();
    change.ref_type = policies->contains(change.object) ? 7 : 2;
    d->dataService->changeUserAccess({change}, bind(&RequestView::changeSubjectAccessHandler));
    return true;
}

void RequestView::changeSubjectAccessHandler(Command& command)
{
    if (d->taskQueue.tasks.isEmpty())
        return;
    const TaskInfo task = d->taskQueue.current();  // still running on success
    if (command.status == Command::StatusOk) {
        // The task runs on until the server's notice that the change is carried out.
        reportSuccess(task);
        return;
    }
    qCWarning(rvc) << "fail change access";
    d->taskQueue.processed();
    d->taskQueue.removeTasks(task);
    reportFailure(task);
    processNextTask();
}

void RequestView::changeSubjectAccessFinishedHandler(Command& command)
{
    command.status = Command::StatusOk;
    if (!d->taskQueue.tasks.isEmpty())
        d->taskQueue.processed();
    QList<TYPE_ID> subjects;
    VDDataStream in(command.data);
    in >> subjects;
    const QString text = tr("Список групп доступа изменен");
    if (d->propertiesDialog)
        d->propertiesDialog->showMessage(text);
    else
        showPopupInformationMessage(text, 0);
    removeCommandType(accessNotice());
    server()->sendLocalPluginsInfo();
    processNextTask();
}

bool RequestView::processChangeAccess(const TaskInfo& task)
{
    logProcess(task);
    QMetaObject::invokeMethod(this, "changeAccessHandler", Qt::QueuedConnection);
    return true;
}

void RequestView::changeAccessHandler()
{
    const std::optional<TaskInfo> running = d->taskQueue.finishCurrent();
    if (!running)
        return;
    reportSuccess(*running);

    if (d->propertiesDialog) {
        if (auto* access = qobject_cast<WorkerAccessView*>(d->propertiesDialog->tabWidget(3))) {
            const ObjectInfo request = d->requests ? d->requests->value(d->currentRequest) : ObjectInfo();
            QMultiHash<unsigned int, unsigned int> accesses;
            const QStringList groups = request.parameters.value(KeyWay).split(QLatin1Char(';'));
            for (const QString& group : groups)
                accesses.insert(d->currentWorker, group.toUInt());
            access->setAccesses(accesses);
        }
    }
    processNextTask();
}

bool RequestView::processUpdateWorkerCards(const TaskInfo& task)
{
    logProcess(task);
    QList<ObjectInfo> toAdd;
    QList<ObjectInfo> toRemove;
    const QList<QVariant> added = task.params.values(QStringLiteral("add"));
    for (const QVariant& card : added)
        toAdd.append(ObjectInfo(card.toByteArray()));
    const QList<QVariant> removed = task.params.values(QStringLiteral("delete"));
    for (const QVariant& card : removed)
        toRemove.append(ObjectInfo(card.toByteArray()));
    d->dataService->updateWorkerCards(task.uid, toAdd, toRemove, true, bind(&RequestView::updateWorkerCardsHandler));
    return true;
}

void RequestView::updateWorkerCardsHandler(Command& command)
{
    const std::optional<TaskInfo> running = d->taskQueue.finishCurrent();
    if (!running)
        return;
    const TaskInfo& task = *running;
    if (command.status != Command::StatusOk) {
        qCWarning(rvc) << "fail update worker card" << firstText(command);
        d->taskQueue.removeTasks(task);
        if (receiverSet(task))
            report(task, Q_ARG(vorandel::TYPE_ID, 0), Q_ARG(QString, task.errorMessage));
        showPopupCriticalMessage(task.errorMessage, 0);
    } else if (receiverSet(task)) {
        report(task, Q_ARG(vorandel::TYPE_ID, task.uid), Q_ARG(QString, QString()));
    } else {
        showPopupMessage(task.message, MessageWidget::Icon(0), 0);
    }
    processNextTask();
}

bool RequestView::processGetBiometrics(const TaskInfo& task)
{
    logProcess(task);
    d->dataService->getUserFingers({task.uid}, bind(&RequestView::getBiometricsHandler));
    return true;
}

void RequestView::getBiometricsHandler(Command& command)
{
    const std::optional<TaskInfo> running = d->taskQueue.finishCurrent();
    if (!running)
        return;
    const TaskInfo& task = *running;
    if (command.status != Command::StatusOk) {
        qCWarning(rvc) << "fail get user fingers";
        d->taskQueue.removeTasks(task);
        if (receiverSet(task))
            report(task, Q_ARG(QList<vorandel::TEMPLATE_DATA>, QList<TEMPLATE_DATA>()));
        showPopupCriticalMessage(task.errorMessage, 0);
    } else {
        QMap<unsigned int, TEMPLATE_DATA> templates;
        VDDataStream in(command.data);
        in >> templates;
        const QList<TEMPLATE_DATA> own = templates.values(task.uid);
        bool invoked = false;
        if (receiverSet(task))
            invoked = report(task, Q_ARG(QList<vorandel::TEMPLATE_DATA>, own));
        else
            showPopupMessage(task.message, MessageWidget::Icon(0), 0);
        qCDebug(rvc) << "Method invoked" << invoked;
    }
    processNextTask();
}

bool RequestView::processScanBiometrics(const TaskInfo& task)
{
    logProcess(task);
    Command command = newCommand();
    command.name = QStringLiteral("show:fingerprintwidget.scan");
    command.type = 8;
    VDDataStream out(&command.data, QIODevice::WriteOnly);
    out << task.uid << d->clientId;
    sendQuery(command, bind(&RequestView::scanBiometricsHandler));
    return true;
}

void RequestView::scanBiometricsHandler(Command& command)
{
    const std::optional<TaskInfo> running = d->taskQueue.finishCurrent();
    if (!running)
        return;
    const TaskInfo& task = *running;
    if (command.status == Command::StatusBiometricsLocked) {
        QMessageBox::information(VDGuiGlobals::vdApp, tr("Персональные данные"),
                                 tr("Запрещено редактирование биометрической информации"), QMessageBox::Ok);
    }
    if (command.status != Command::StatusOk) {
        firstText(command);
        d->taskQueue.removeTasks(task);
    }
    processNextTask();
}
