#include "requestview.h"

#include "requestview_p.h"
#include "ui_requestview.h"

#include "authdata.h"
#include "constants.h"
#include "localstorage.h"
#include "objecttreeproxy.h"
#include "requestinfopanel.h"
#include "requestmodel.h"
#include "requestsearchkeys.h"
#include "requestviewlogging.h"
#include "tabbeddialog.h"
#include "vd5sdkdata.h"
#include "vddatastream.h"
#include "vdtableview.h"

#include <QHeaderView>
#include <QTimer>
#include <QtConcurrent/QtConcurrentRun>

using namespace vorandel;
using namespace requestview::detail;

namespace {

// What a row shows of its worker, which the model doesn't work out itself; a request without a
// worker keeps the two blanks of the name's format.
struct WorkerColumns
{
    explicit WorkerColumns(const RequestSearchKeys::Worker& worker)
        : number(worker.number),
          fullName(QStringLiteral("%1 %2 %3").arg(worker.surname, worker.name, worker.patronymic))
    {
    }
    QString number;
    QString fullName;
};

void writeWorkerColumns(RequestModel* model, const QModelIndex& row, const WorkerColumns& worker)
{
    model->setData(row.sibling(row.row(), ColumnWorkerNumber), worker.number, Qt::DisplayRole);
    model->setData(row.sibling(row.row(), ColumnFullName), worker.fullName, Qt::DisplayRole);
    model->setData(row.sibling(row.row(), ColumnConfirmer), QString(), Qt::DisplayRole);
}

}  // namespace

// --- loading and live update -----------------------------------------------------------------

void RequestView::initModels()
{
    VDTableView* table = ui->tblRequests;
    d->model = new RequestModel(table);
    // The search index takes the larger part of the work. A request's own keys are gathered on
    // another core while the rows are made, and the names, which the rows read anyway, here. Both
    // sides only read the store, which nothing can change before this function returns to the
    // event loop.
    using Search = RequestSearchKeys;
    QFuture<Search::Index::Batch> gathering;
    Search::Index::Batch nameKeys;
    if (d->requests)
        gathering = QtConcurrent::run(&Search::gatherOwnKeys, d->requests);
    d->model->blockSignals(true);
    if (d->requests) {
        // A worker has several requests: what his rows and keys take of him is worked out once.
        struct KnownWorker
        {
            WorkerColumns columns;
            Search::KeyList nameKeys;
        };
        QHash<unsigned int, KnownWorker> workers;
        for (auto it = d->requests->cbegin(); it != d->requests->cend(); ++it) {
            const ObjectInfo& record = RequestModel::workerOf(it.value());
            auto known = workers.constFind(record.uid);
            if (known == workers.cend()) {
                const Search::Worker worker = Search::texts(record);
                Search::KeyList keys;
                Search::appendNameKeys(keys, worker);
                known = workers.insert(record.uid, {WorkerColumns(worker), keys});
            }
            writeWorkerColumns(d->model, d->model->add(it.value()), known->columns);
            for (const QString& key : known->nameKeys)
                nameKeys.add(key, it.value().uid);
        }
    }
    d->model->blockSignals(false);

    d->proxy = new ObjectTreeProxy(table);
    d->proxy->setSearchEnabled(true);
    d->proxy->setSourceModel(d->model);
    d->proxy->setFilterRole(FilterRole);
    d->proxy->setFilterUids(defaultFilter());

    table->setModel(d->proxy);
    connect(d->proxy, &QAbstractItemModel::layoutChanged, this, &RequestView::updateTableStatus);
    connect(d->proxy, &QAbstractItemModel::rowsInserted, this, &RequestView::updateTableStatus);
    connect(d->proxy, &QAbstractItemModel::rowsRemoved, this, &RequestView::updateTableStatus);
    connect(d->proxy, &QAbstractItemModel::modelReset, this, &RequestView::updateTableStatus);
    updateTableStatus();
    table->horizontalHeader()->setDefaultSectionSize(100);
    table->setHeaderMenuColumns({1, 3, 4, 5, 8, 9, 10, 12, 13, 11, 14, 15, 16, 17, 18});
    table->setHeaderHiddenByDefaultColumns({0, 7, 6, 11, 12, 13, 14, 15, 16, 17, 18});

    auto* selection = new QItemSelectionModel(d->proxy, table);
    table->setSelectionModel(selection);
    connect(selection, &QItemSelectionModel::selectionChanged, this, &RequestView::requestSelectionChanged);

    QHeaderView* header = table->horizontalHeader();
    header->setSortIndicator(ColumnStart, Qt::DescendingOrder);
    table->sortByColumn(header->sortIndicatorSection(), header->sortIndicatorOrder());

    connect(table, &VDTableView::headerStateChanged, this, &RequestView::saveHeaderState);
    restoreHeaderState();
    requestSelectionChanged();

    // The index is empty here: the gathered entries go in at once.
    if (d->requests) {
        Search::Index::Batch batch = gathering.result();
        gathering = {};  // it holds a copy of the batch, which addAll() lets go of piece by piece
        batch.merge(nameKeys);
        nameKeys = {};
        d->searchIndex.addAll(std::move(batch));
    }
}

void RequestView::readPassRequestData(QList<TYPE_ID> uids)
{
    for (const TYPE_ID uid : qAsConst(uids)) {
        if (!d->requests)
            continue;
        const ObjectInfo request = d->requests->value(uid);
        // An open dialog follows a change of the request it shows.
        if (d->propertiesDialog && d->currentRequest == uid)
            showRequestProperties(uid, false);
        if (!d->model->contains(uid)) {
            qCDebug(rvc) << "Not contains" << uid << d->model->uniqueKeys();
            d->searchIndex.remove(uid);
        }
        const QModelIndex row = d->model->add(request);
        const RequestSearchKeys::Worker worker = RequestSearchKeys::workerOf(request);
        writeWorkerColumns(d->model, row, WorkerColumns(worker));
        RequestSearchKeys::reindex(d->searchIndex, uid, request, worker);
    }
    updateInfoPanelDelayed();
}

void RequestView::removePassPequestData(QList<TYPE_ID> uids)
{
    for (const TYPE_ID uid : qAsConst(uids))
        d->searchIndex.remove(uid);
}

void RequestView::dataChanged(QString dataname, QList<TYPE_ID> uids)
{
    if (dataname == PASS_REQUEST_DATANAME) {
        d->visibility.changed(d->requests, uids);
        readPassRequestData(uids);
        d->proxy->setFilterUids(defaultFilter());
    } else if (dataname == SUBJECT_DATANAME) {
        // Only requests that pass the filter now are refreshed; a hidden one keeps its old name
        // until it changes itself.
        QList<TYPE_ID> affected;
        const QSet<unsigned int> shown = d->proxy->filterResult();
        for (const unsigned int request : shown) {
            const unsigned int subject =
                LocalStorage::instance()->constObject(request, PASS_REQUEST_DATANAME).parameters.value(KeySubject).toUInt();
            for (const TYPE_ID worker : qAsConst(uids)) {
                if (worker == subject)
                    affected.append(request);
            }
        }
        readPassRequestData(affected);
    }
}

void RequestView::dataRemoved(QString dataname, QList<TYPE_ID> uids)
{
    if (dataname != PASS_REQUEST_DATANAME)
        return;
    d->visibility.removed(uids);
    removePassPequestData(uids);
    d->proxy->setFilterUids(defaultFilter());
}

void RequestView::requestSelectionChanged()
{
    const QItemSelectionModel* selection = ui->tblRequests->selectionModel();
    const QModelIndexList rows = selection ? selection->selectedRows(0) : QModelIndexList();
    bool dismissed = false;
    bool allActive = true;
    for (const QModelIndex& row : rows) {
        const ObjectInfo& request = d->model->info(d->proxy->mapToSource(row));
        const ObjectInfo& worker = RequestModel::workerOf(request);
        if (worker.parameters.value(KeyObjectState).toLower() == QLatin1String("d")) {
            dismissed = true;
            break;
        }
        if (allActive)
            allActive = request.parameters.value(db::pass_request::STATE).toUInt() == PASS_REQUEST_STATE_ACTIVE;
    }
    const QStringList roles = AuthData::roles();
    const bool canConfirm = roles.contains(RoleConfirm);
    ui->actionConfirmRequest->setEnabled(!rows.isEmpty() && canConfirm && !dismissed);
    ui->actionRejectRequest->setEnabled(!rows.isEmpty() && canConfirm && (!dismissed || allActive));
    ui->actionSettings->setEnabled(rows.size() == 1 && roles.contains(RoleUpdate));
    ui->actionRemove->setEnabled(!rows.isEmpty() && roles.contains(RoleDelete));
    ui->actionAddRequest->setEnabled(roles.contains(RoleCreate));
    updateInfoPanelDelayed();
}

void RequestView::updateInfoPanelDelayed()
{
    if (d->infoTimer)
        d->infoTimer->start();
}

void RequestView::updateInfoPanel()
{
    const QItemSelectionModel* selection = ui->tblRequests->selectionModel();
    const QModelIndexList rows = selection ? selection->selectedRows(0) : QModelIndexList();
    if (rows.size() > 1) {
        d->infoPanel->showMultiRequestsInfo(rows);
        return;
    }
    if (rows.isEmpty()) {
        d->infoPanel->clear();
        return;
    }
    const QModelIndex& row = rows.first();
    d->infoPanel->showRequestInfo(row);
    const TYPE_ID uid = TYPE_ID(row.sibling(row.row(), ColumnUid).data(Qt::DisplayRole).toLongLong());
    const TYPE_ID worker = LocalStorage::instance()
                               ->constObject(uid, PASS_REQUEST_DATANAME)
                               .parameters.value(KeySubject)
                               .toUInt();
    if (worker == 0)
        return;
    BLOB_DATA_RESQUEST photo;
    photo.uid = worker;
    photo.name = KeyPhoto;
    photo.md5 = LocalStorage::instance()->blobMd5(worker, KeyPhoto);
    d->dataService->getBlobDataChange({photo}, bind(&RequestView::blobDataRead));
}

void RequestView::blobDataRead(Command& command)
{
    if (command.status != Command::StatusOk) {
        qCWarning(rvc) << "blob data read error" << command.status;
        return;
    }
    QHash<TYPE_ID, QHash<QString, QByteArray>> blobs;
    VDDataStream in(command.data);
    in >> blobs;  // a broken stream leaves the hash empty
    for (auto object = blobs.cbegin(); object != blobs.cend(); ++object) {
        qCDebug(rvc) << "read blob" << object.key() << object.value().uniqueKeys();
        const auto photo = object.value().constFind(KeyPhoto);
        if (photo != object.value().cend())
            LocalStorage::instance()->setBlob(object.key(), KeyPhoto, photo.value());
    }
    if (!blobs.isEmpty())
        updateInfoPanelDelayed();
}

void RequestView::selectRequest(TYPE_ID uid)
{
    const QModelIndex source = d->model->indexForUid(uid);
    if (!source.isValid())
        return;
    const QModelIndex row = d->proxy->mapFromSource(source);
    if (!row.isValid())
        return;  // hidden by the filter
    VDTableView* table = ui->tblRequests;
    table->clearSelection();
    table->selectionModel()->select(
        row, QItemSelectionModel::Select | QItemSelectionModel::Current | QItemSelectionModel::Rows);
    // Column 0 is hidden by default, and a view doesn't scroll to a hidden cell: the row is shown
    // through the column at the left edge.
    const int shownColumn = table->horizontalHeader()->logicalIndexAt(0);
    table->scrollTo(shownColumn < 0 ? row : row.siblingAtColumn(shownColumn), QAbstractItemView::PositionAtTop);
    table->setFocus(Qt::OtherFocusReason);
}

// --- filter and search -----------------------------------------------------------------------

void RequestView::updateTableStatus()
{
    const QSet<TYPE_ID> visible = defaultFilter();
    ui->tblRequests->setTotalRowCount(visible.size());
    if (d->proxy->rowCount() > 0) {
        ui->tblRequests->setPlaceholderText(QString());
        return;
    }
    QString why;
    if (!d->requests || d->requests->isEmpty())
        why = AuthData::roles().contains(RoleCreate) ? tr("Заявок пока нет. Новую заявку оформляет кнопка «Добавить».")
                                                     : tr("Заявок пока нет.");
    else if (visible.isEmpty())
        why = tr("Нет заявок, которые вам доступны: вы не участвуете в согласовании ни одной заявки.");
    else
        why = tr("Нет заявок, подходящих под условия поиска и выбранные состояния.");
    ui->tblRequests->setPlaceholderText(why);
}

QSet<TYPE_ID> RequestView::defaultFilter() const
{
    return d->visibility.visible(LocalStorage::instance()->constObjects(PASS_REQUEST_DATANAME), AuthData::userId(),
                                 AuthData::roles().contains(RoleShowAll));
}

void RequestView::filterChanged(const QStringList& values)
{
    d->proxy->setColumnFilter(ColumnState, values);
}

void RequestView::filter(const QString& text)
{
    if (text.isEmpty()) {
        d->proxy->setFilterUids(defaultFilter());
        return;
    }
    QSet<unsigned int> found;
    d->searchIndex.contains(text.toLower(), found);
    found.intersect(defaultFilter());
    d->proxy->setFilterUids(found);
}
