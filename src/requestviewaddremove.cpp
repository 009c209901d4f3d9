#include "requestview.h"

#include "requestview_p.h"
#include "ui_requestview.h"

#include "constants.h"
#include "deleteobjectwizard.h"
#include "newrequestwizard.h"
#include "requestitemdelegate.h"
#include "requestviewlogging.h"
#include "vdserverinterface.h"
#include "vdtableview.h"

#include <QMessageBox>

using namespace vorandel;
using namespace requestview::detail;

// --- adding and removing requests --------------------------------------------------------------

void RequestView::addRequest()
{
    QPointer<QWidget> fingerprints;
    const QList<VDPluginInterface*> plugins = server()->queryPlugins();
    for (VDPluginInterface* plugin : plugins) {
        if (plugin->pluginName() == QLatin1String("fingerprintwidget")) {
            fingerprints = plugin->widget();
            break;
        }
    }

    auto* wizard = new NewRequestWizard(this);
    wizard->setModal(true);
    wizard->setAttribute(Qt::WA_DeleteOnClose);
    wizard->setFingerprintWidget(fingerprints);
    connect(wizard, &NewRequestWizard::appendTask, this, &RequestView::addTask);
    connect(wizard, &NewRequestWizard::selectRequest, this, &RequestView::selectRequest);
    wizard->show();
}

void RequestView::removeRequests()
{
    const QModelIndexList rows = ui->tblRequests->selectionModel()->selectedRows(ColumnUid);
    if (rows.isEmpty())
        return;
    QList<TYPE_ID> uids;
    for (const QModelIndex& row : rows) {
        const ObjectInfo request = d->requests ? d->requests->value(row.data(Qt::DisplayRole).toUInt()) : ObjectInfo();
        // Active requests stay out without a word, as long as something else is left.
        if (request.uid != 0 && removable(request.parameters.value(db::pass_request::STATE).toInt()))
            uids.append(request.uid);
    }
    if (uids.isEmpty()) {
        QMessageBox box(QMessageBox::Information, tr("Удаление"), tr("Нет заявок для удаления"), QMessageBox::Ok, this);
        box.setInformativeText(tr("Нельзя удалить активные заявки"));
        box.exec();
        return;
    }

    auto* wizard = new DeleteObjectWizard(this);
    wizard->setAttribute(Qt::WA_DeleteOnClose);
    wizard->setModal(true);
    wizard->setUids(uids);
    wizard->setNeedVerify(false);
    // A delegate without a parent becomes the wizard's.
    wizard->setItemDelegate(new RequestItemDelegate, nullptr);
    wizard->setWindowTitle(tr("Мастер удаления заявок"));
    connect(wizard, &DeleteObjectWizard::appendTask, this, &RequestView::addTask, Qt::QueuedConnection);
    wizard->setEnabled(true);
    wizard->show();
}
