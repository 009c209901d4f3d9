#include "requestview.h"

#include "requestview_p.h"
#include "ui_requestview.h"

#include "constants.h"
#include "localstorage.h"
#include "requestpropertiesview.h"
#include "requestviewlogging.h"
#include "tabbeddialog.h"
#include "vd5sdkdata.h"
#include "vdactionsinserthelper.h"
#include "vdactionstoolbar.h"
#include "vdguiglobals.h"
#include "vdtableview.h"
#include "workeraccessview.h"
#include "workercardview.h"
#include "workerjobview.h"
#include "workerpropertyview.h"

#include <QMessageBox>

#include <new>

using namespace vorandel;
using namespace requestview::detail;

namespace {

enum Tab { RequestTab = 0, PersonTab = 1, JobTab = 2, AccessTab = 3, CardTab = 4 };

// The tab of the dialog at `index` if it is of the wanted class, else null.
template <typename View>
View* tabOf(const TabbedDialog* dialog, int index)
{
    return qobject_cast<View*>(dialog->tabWidget(index));
}

// The worker tab at `index` if the dialog has it; otherwise a new one, added under `title`, whose
// edits bring the save button. `created` tells which.
template <typename View>
View* workerTab(TabbedDialog* dialog, int index, const QString& title, bool* created = nullptr)
{
    auto* view = tabOf<View>(dialog, index);
    if (created)
        *created = !view;
    if (view)
        return view;
    view = new View(dialog);
    QObject::connect(view, &PropertyBaseWidget::dataEdited, dialog, &TabbedDialog::showSaveButton);
    dialog->addTab(view, title);
    return view;
}

OBJECT_HASH one(TYPE_ID uid, const ObjectInfo& object)
{
    OBJECT_HASH objects;
    objects.insert(uid, object);
    return objects;
}

}  // namespace

// --- the request properties dialog -------------------------------------------------------------

void RequestView::showRequestProperties(TYPE_ID uid, bool first_show)
{
    if (uid != 0) {
        d->currentRequest = uid;
    } else {
        const QModelIndexList rows = ui->tblRequests->selectionModel()->selectedRows(ColumnUid);
        if (rows.size() != 1)
            return;
        d->currentRequest = rows.first().data(Qt::DisplayRole).toUInt();
    }

    TabbedDialog* dialog = d->propertiesDialog ? d->propertiesDialog.data() : createPropertiesDialog();
    if (!dialog)
        return;

    auto* requestView = tabOf<RequestPropertiesView>(dialog, RequestTab);
    if (!requestView) {
        requestView = new RequestPropertiesView(dialog);
        dialog->addTab(requestView, tr("Основное"));
        connectRequestTab(requestView);
    }
    const ObjectInfo request = d->requests ? d->requests->value(d->currentRequest) : ObjectInfo();
    requestView->setUid(d->currentRequest);
    requestView->setParameters(request.parameters);

    d->currentWorker = request.parameters.value(KeySubject, QStringLiteral("0")).toUInt();
    const LocalStorage* store = LocalStorage::instance();
    const OBJECT_HASH* policies = store->constObjects(POLICY_DATANAME);
    const OBJECT_HASH* subjects = store->constObjects(SUBJECT_DATANAME);
    const ObjectInfo worker = subjects ? subjects->value(d->currentWorker) : ObjectInfo();
    const bool readOnly = !editable(request.parameters.value(db::pass_request::STATE).toInt());
    requestView->setReadOnly(readOnly);
    const bool withWorker = d->currentWorker != 0;
    const OBJECT_HASH shownWorker = one(d->currentWorker, worker);

    auto* person = workerTab<WorkerPropertyView>(dialog, PersonTab, tr("Сотрудник"));
    dialog->setTabEnabled(PersonTab, withWorker);
    if (withWorker && subjects) {
        person->setReadOnly(readOnly);
        person->setCurrent(shownWorker);
        // Made again on every pass, without a check for doubles: a refresh adds one of each.
        connect(person, &PropertyBaseWidget::dataEdited, dialog, &TabbedDialog::showSaveButton);
        connect(dialog, &TabbedDialog::save, person, &PropertyBaseWidget::applyChanges);
        connect(this, &RequestView::workerSaved, person, &PropertyBaseWidget::saved, Qt::QueuedConnection);
    }

    auto* job = workerTab<WorkerJobView>(dialog, JobTab, tr("Сведения о работе"));
    dialog->setTabEnabled(JobTab, withWorker);
    if (withWorker && subjects) {
        const OBJECT_HASH* jobs = store->constObjects(JOB_DATANAME);
        job->setJobList(jobs ? *jobs : OBJECT_HASH());
        job->setReadOnly(readOnly);
        job->setCurrent(shownWorker);
        job->setAddJobsEnabled(false);
    }

    bool created = false;
    auto* access = workerTab<WorkerAccessView>(dialog, AccessTab, tr("Доступ"), &created);
    if (created) {
        access->disableLockerView();
        access->setAccessSchedule(store->schedules());
        disconnect(store, &LocalStorage::dataChanged, access, &WorkerAccessView::dataChanged);
    }
    dialog->setTabEnabled(AccessTab, withWorker);
    if (!policies) {
        dialog->setTabEnabled(AccessTab, false);
    } else {
        access->setReadOnly(readOnly);
        access->setCurrent(shownWorker);
        QMultiHash<unsigned int, unsigned int> groups;
        const QStringList way = request.parameters.value(KeyWay).split(QLatin1Char(';'), Qt::SkipEmptyParts);
        for (const QString& group : way)
            groups.insert(d->currentWorker, group.toUInt());
        access->setAccesses(groups);
    }

    auto* cards = tabOf<WorkerCardView>(dialog, CardTab);
    if (!cards) {
        cards = new WorkerCardView(dialog);
        const int index = dialog->addTab(cards, tr("Идентификация"));
        const QList<QWidget*> pages = cards->subPages();
        for (QWidget* page : pages)
            dialog->addSubTab(index, page, page->windowIcon(), page->windowTitle());
        connectCardTab(cards);
    }
    if (const OBJECT_HASH* devices = store->constObjects(DEVICE_DATANAME)) {
        for (const ObjectInfo& device : *devices) {
            if (device.parameters.value(KeyObjectState).toLower() != QLatin1String("d"))
                cards->addDevice(device);
        }
    }
    dialog->setTabEnabled(CardTab, withWorker);

    if (worker.uid == 0) {
        for (int tab = RequestTab; tab <= CardTab; ++tab)
            dialog->setTabEnabled(tab, false);
        cards->setCards({});
    } else {
        cards->setReadOnly(readOnly);
        cards->setCurrent(shownWorker);
        // A refresh leaves the list alone: it holds what the operator added and removed.
        if (first_show) {
            QList<ObjectInfo> held;
            const QList<INHERIT_DATA> links = worker.inherits.values(INHERIT_CARD);
            for (const INHERIT_DATA& link : links) {
                const ObjectInfo& card = store->constObject(link.second, CARD_DATANAME);
                if (card.isValid())
                    held.append(card);
            }
            cards->setCards(held);
        }
        cards->setShowPinEnabled(true);
        cards->setChangeCardEnabled(true);
        cards->setChangePinCodeEnabled(true);
        cards->setScanBiometricsEnabled(true);

        dialog->setTabEnabled(RequestTab, true);
        const bool inService = worker.parameters.value(KeyObjectState) != QLatin1String("d");
        for (int tab = PersonTab; tab <= CardTab; ++tab)
            dialog->setTabEnabled(tab, inService);
    }

    dialog->hideToolBar();
    dialog->show();
    dialog->showEnabledTab();
    if (first_show) {
        dialog->raise();
        dialog->activateWindow();
    }

    d->dataService->getUserFingers({d->currentWorker}, bind(&RequestView::fingerInfoRead));
}

TabbedDialog* RequestView::createPropertiesDialog()
{
    TabbedDialog* dialog = nullptr;
    try {
        dialog = new TabbedDialog(this);
    } catch (const std::bad_alloc&) {
        QMessageBox::critical(VDGuiGlobals::vdApp, tr("Ошибка"), tr("Ошибка создания диалога. Перезапустите программу"));
        return nullptr;
    }
    d->propertiesDialog = dialog;
    dialog->setModal(true);
    dialog->setWindowModality(Qt::ApplicationModal);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowIcon(QIcon::fromTheme(QStringLiteral("action-config")));
    dialog->setWindowTitle(tr("Свойства заявки"));
    connect(this, &RequestView::requestSaved, dialog, &TabbedDialog::saved);
    connect(dialog, &TabbedDialog::save, this, &RequestView::saveRequestWorker);
    connect(this, QOverload<QString>::of(&RequestView::showMessage), dialog,
            QOverload<const QString&>::of(&TabbedDialog::showMessage));
    connect(this, QOverload<QString, QColor>::of(&RequestView::showMessage), dialog,
            QOverload<const QString&, const QColor&>::of(&TabbedDialog::showMessage));
    // The store may take the request or its worker away while the operator looks at them.
    connect(LocalStorage::instance(), &LocalStorage::dataRemoved, dialog,
            [this](const QString& dataname, const QList<TYPE_ID>& uids) { propertiesObjectsRemoved(dataname, uids); });
    VDActionsInsertHelper::insertActionWidget(dialog->toolBar(), nullptr, ui->actionConfirmRequest);
    VDActionsInsertHelper::insertActionWidget(dialog->toolBar(), nullptr, ui->actionRejectRequest);
    dialog->showToolBar();
    return dialog;
}

void RequestView::connectRequestTab(RequestPropertiesView* view)
{
    TabbedDialog* dialog = d->propertiesDialog;
    connect(view, &RequestPropertiesView::addWorker, this, &RequestView::sendAddWorker);
    // By name: the view keeps these slots to itself.
    connect(this, SIGNAL(workerSaved(vorandel::TYPE_ID)), view, SLOT(workerSaved(vorandel::TYPE_ID)),
            Qt::QueuedConnection);
    connect(view, &RequestPropertiesView::saveRequest, this, &RequestView::sendSaveRequest);
    connect(view, &PropertyBaseWidget::dataEdited, dialog, &TabbedDialog::showSaveButton);
    connect(dialog, &TabbedDialog::save, view, &PropertyBaseWidget::applyChanges);
    connect(this, &RequestView::requestSaved, view, &PropertyBaseWidget::saved);
    connect(view, &RequestPropertiesView::getWorkerFingers, this, &RequestView::sendGetWorkerFingers);
    connect(this, SIGNAL(fingersReceived(QHash<vorandel::TYPE_ID, requestview::UserFingers>)), view,
            SLOT(fingersReceived(QHash<vorandel::TYPE_ID, requestview::UserFingers>)));
}

void RequestView::connectCardTab(WorkerCardView* view)
{
    TabbedDialog* dialog = d->propertiesDialog;
    connect(view, &WorkerCardView::appendTask, this, &RequestView::addTask, Qt::QueuedConnection);
    connect(view, &WorkerCardView::readCard, this, &RequestView::sendReadCard);
    connect(this, &RequestView::cardRead, view, &WorkerCardView::cardRead);
    connect(this, &RequestView::cardReadFailed, view, &WorkerCardView::cardReadFailed);
    connect(view, &WorkerCardView::getFingerprints, this, &RequestView::editFingerptints);
    connect(view, &WorkerCardView::setSaveEnabled, dialog, &TabbedDialog::setSaveEnabled);
    connect(this, &RequestView::workerFingers, view, &WorkerCardView::setWorkerFingers);
    connect(this, &RequestView::workerFingersScanned, view, &WorkerCardView::biometricsScanned);
    connect(view, &PropertyBaseWidget::dataEdited, dialog, &TabbedDialog::showSaveButton);
    connect(dialog, &TabbedDialog::save, view, &WorkerCardView::applyChanges);
    connect(view, &WorkerCardView::showMessage, dialog, QOverload<const QString&>::of(&TabbedDialog::showMessage));
    connect(view, &WorkerCardView::showCriticalMessage, dialog, &TabbedDialog::showCriticalMessage);
    connect(view, &WorkerCardView::generateCard, this, &RequestView::generateCard);
    connect(view, &WorkerCardView::sendEmail, this, &RequestView::sendEmail);
}

void RequestView::propertiesObjectsRemoved(const QString& dataname, const QList<TYPE_ID>& uids)
{
    TabbedDialog* dialog = d->propertiesDialog;
    if (!dialog)
        return;
    if (dataname == PASS_REQUEST_DATANAME && uids.contains(d->currentRequest)) {
        // The fields stay as they are, to be read or copied; there is nothing left to save them to.
        qCDebug(rvc) << "request of the open dialog removed" << d->currentRequest;
        dialog->setSaveEnabled(QStringLiteral("request"), false);
        dialog->showCriticalMessage(tr("Заявка удалена: сохранить изменения нельзя"));
    } else if (dataname == SUBJECT_DATANAME && d->currentWorker != 0 && uids.contains(d->currentWorker)) {
        qCDebug(rvc) << "worker of the open dialog removed" << d->currentWorker;
        for (int tab = PersonTab; tab <= CardTab; ++tab) {
            // His edits would only go to a worker who is no more.
            if (auto* view = qobject_cast<PropertyBaseWidget*>(dialog->tabWidget(tab)))
                view->rejectChanges();
            dialog->setTabEnabled(tab, false);
        }
        dialog->showCriticalMessage(tr("Сотрудник удалён: его данные сохранить нельзя"));
    }
}
