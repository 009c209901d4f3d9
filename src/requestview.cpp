#include "requestview.h"

#include "requestview_p.h"
#include "ui_requestview.h"

#include "authdata.h"
#include "constants.h"
#include "dbquery.h"
#include "hiddenpanel.h"
#include "localstorage.h"
#include "objecttreeproxy.h"
#include "requestfilterwidget.h"
#include "requestinfopanel.h"
#include "requestmodel.h"
#include "requestsearchkeys.h"
#include "requestviewlogging.h"
#include "searchwidget.h"
#include "settings.h"
#include "tabbeddialog.h"
#include "vd5sdkdata.h"
#include "vd5sdkdevices.h"
#include "vdactionsinserthelper.h"
#include "vddatastream.h"
#include "vdguiglobals.h"
#include "vdserverinterface.h"
#include "vdstackedtoolbars.h"
#include "vdtableview.h"
#include "workeraccessview.h"
#include "workercardview.h"
#include "workerjobview.h"
#include "workerpropertyview.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QHostInfo>
#include <QKeyEvent>
#include <QMessageBox>
#include <QNetworkInterface>
#include <QTimer>
#include <QtConcurrent/QtConcurrentRun>

using namespace vorandel;

namespace {

const QString RoleShow = QStringLiteral("RL_PASS_REQUESTS_SHOW");
const QString RoleShowAll = QStringLiteral("RL_PASS_REQUESTS_SHOW_ALL");
const QString RoleCreate = QStringLiteral("RL_PASS_REQUESTS_CREATE");
const QString RoleUpdate = QStringLiteral("RL_PASS_REQUESTS_UPDATE");
const QString RoleDelete = QStringLiteral("RL_PASS_REQUESTS_DELETE");
const QString RoleConfirm = QStringLiteral("RL_PASS_REQUESTS_CONFIRM");

const QString KeySubject = QStringLiteral("PT_SUBJECT_ID");
const QString KeyObjectState = QStringLiteral("PT_OBJECTSTATE");
const QString KeyWay = QStringLiteral("PT_WAY");
const QString KeyPhoto = QStringLiteral("PT_PHOTO");

const QString HeaderStateKey = QStringLiteral("requestview/header_state");
const QString BuildNumber = QStringLiteral("1777379737");

// Columns of the request table that this tab writes by hand.
constexpr int ColumnUid = 0;
constexpr int ColumnState = 1;
constexpr int ColumnWorkerNumber = 4;
constexpr int ColumnFullName = 5;
constexpr int ColumnStart = 8;
constexpr int ColumnConfirmer = 10;

constexpr int FilterRole = Qt::UserRole;

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

bool receiverSet(const TaskInfo& task)
{
    return task.receiver && !task.slot.isEmpty();
}

// Tells the receiver of a task by its slot's name, in a later turn of the event loop.
template <typename... Args>
bool report(const TaskInfo& task, Args... args)
{
    return QMetaObject::invokeMethod(task.receiver.data(), task.slot.toLatin1().constData(), Qt::QueuedConnection,
                                     args...);
}

// The notice that an access change is carried out, named for this session; it lives as long as
// an access task runs.
CommandType accessNotice()
{
    return CommandType(8, QStringLiteral("change_access_result:%1").arg(QString::fromLatin1(AuthData::sessionId().toHex())));
}

QString firstText(const Command& command)
{
    QString text;
    VDDataStream in(command.data);
    in >> text;
    return text;
}

QString makeClientId(const QString& pluginName)
{
    const QString monitoringId =
        Settings::instance()->value(QStringLiteral("monitoring/id"), QStringLiteral("1")).toString();
    QStringList addresses;
    const QList<QHostAddress> all = QNetworkInterface::allAddresses();
    for (const QHostAddress& address : all)
        addresses.append(address.toString());
    addresses.removeOne(QStringLiteral("127.0.0.1"));
    addresses.removeOne(QStringLiteral("::1"));
    const QString network = addresses.isEmpty() ? QHostInfo::localHostName() : addresses.first();
    return QStringList{pluginName, monitoringId, network, QString::number(QDateTime::currentSecsSinceEpoch())}.join(
        QLatin1Char(' '));
}

}  // namespace

// --- private data ------------------------------------------------------------------------------

RequestViewPrivate::RequestViewPrivate(RequestView* owner) : taskQueue(owner)
{
    taskQueue.handlers.insert(QStringLiteral("create_object"), &RequestView::processCreateObject);
    taskQueue.handlers.insert(QStringLiteral("save_object"), &RequestView::processSaveObject);
    taskQueue.handlers.insert(QStringLiteral("update_worker_cards"), &RequestView::processUpdateWorkerCards);
    taskQueue.handlers.insert(QStringLiteral("change_subject_access"), &RequestView::processChangeSubjectAccess);
    taskQueue.handlers.insert(QStringLiteral("change_access"), &RequestView::processChangeAccess);
    taskQueue.handlers.insert(QStringLiteral("get_biometrics"), &RequestView::processGetBiometrics);
    taskQueue.handlers.insert(QStringLiteral("delete_object"), &RequestView::processDeleted);
    taskQueue.handlers.insert(QStringLiteral("scan_biometrics"), &RequestView::processScanBiometrics);
}

// --- the plug-in and its life cycle ----------------------------------------------------------

RequestView::RequestView(QWidget* parent)
    : PluginWidget(parent), ui(std::make_unique<Ui_RequestView>()), d(std::make_unique<RequestViewPrivate>(this))
{
    setWindowTitle(tr("Заявки"));
    setWindowIcon(QIcon::fromTheme(QStringLiteral("object-OT_PASS_REQUEST")));
    qRegisterMetaType<QHash<QString, QString>>("QHash<QString,QString>");
    qRegisterMetaType<QList<CARD_ID>>("QList<vorandel::CARD_ID>");
    qRegisterMetaType<requestview::UserFingers>("requestview::UserFingers");
    qRegisterMetaType<QHash<TYPE_ID, requestview::UserFingers>>("QHash<vorandel::TYPE_ID,requestview::UserFingers>");
    // Names under which results travel to the receivers of tasks.
    qRegisterMetaType<TYPE_ID>("vorandel::TYPE_ID");
    qRegisterMetaType<TaskInfo>("vorandel::TaskInfo");
    qRegisterMetaType<QList<TEMPLATE_DATA>>("QList<vorandel::TEMPLATE_DATA>");
    qRegisterMetaType<ObjectInfo>("vorandel::ObjectInfo");
}

RequestView::~RequestView() = default;

VDPluginInterface::Handler RequestView::bind(void (RequestView::*handler)(Command&))
{
    return [this, handler](Command& command) { (this->*handler)(command); };
}

QString RequestView::pluginName() const
{
    return QStringLiteral("requestview");
}

int RequestView::pluginVersion() const
{
    return 0x10000;
}

QString RequestView::pluginBuild() const
{
    return QStringLiteral("%1.%2").arg(pluginVersion() >> 16).arg(BuildNumber);
}

QStringList RequestView::requireList()
{
    return {QStringLiteral("localdatamanager")};
}

QObject* RequestView::object()
{
    return this;
}

QWidget* RequestView::widget()
{
    return this;
}

bool RequestView::canShow() const
{
    return AuthData::roles().contains(RoleShow);
}

void RequestView::onTabActivated(int) {}

QList<PLUGIN_TAB> RequestView::tabList() const
{
    PLUGIN_TAB tab;
    tab.title = tr("Заявки");
    tab.icon = QIcon::fromTheme(QStringLiteral("object-OT_PASS_REQUEST"));
    tab.index = 0;
    tab.count = 1;
    return {tab};
}

COMMAND_LIST RequestView::init(VDServerInterface* server, const QString& path)
{
    d->clientId = makeClientId(pluginName());
    COMMAND_LIST types = VDPluginInterface::init(server, path);
    const CommandType commandResultType(8, QStringLiteral("command_result:%1").arg(d->clientId));
    const CommandType fingerprintType(8, QStringLiteral("fingerprint.finished:%1").arg(d->clientId));
    const CommandType dbResultType(1, QStringLiteral("db.async_result:%1").arg(d->clientId));
    registerCommandHandler(commandResultType, bind(&RequestView::commandResult));
    registerCommandHandler(fingerprintType, bind(&RequestView::fingerprintDialogClosedHandler));
    registerCommandHandler(dbResultType, bind(&RequestView::dbAsyncResult));
    types << commandResultType << fingerprintType << dbResultType;
    return types;
}

void RequestView::uninit() {}

void RequestView::initOnExchangeReady() {}

void RequestView::insertedToInterface()
{
    qCDebug(rvc) << "inserted";
    if (d->dataService) {
        qCWarning(rvc) << "fail: the page is built already";
        return;
    }
    d->dataService = new vd5sdk::Data(this, AuthData::sessionId());
    d->deviceService = new vd5sdk::Devices(d->clientId, this);
    d->requests = LocalStorage::instance()->constObjects(PASS_REQUEST_DATANAME);

    d->infoTimer = new QTimer(this);
    d->infoTimer->setInterval(200);
    d->infoTimer->setSingleShot(true);
    connect(d->infoTimer, &QTimer::timeout, this, &RequestView::updateInfoPanel);

    initWidgetContents();
    initInfoPanel();
    initActions();
    initModels();
    initPluginActions();
    initFilterWidget();
    updateInfoPanelDelayed();

    connect(LocalStorage::instance(), &LocalStorage::dataChanged, this, &RequestView::dataChanged);
    connect(LocalStorage::instance(), &LocalStorage::dataRemoved, this, &RequestView::dataRemoved);
    ui->tblRequests->installEventFilter(this);
}

void RequestView::initWidgetContents()
{
    ui->setupUi(this);
    ui->tblRequests->horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    ui->tblRequests->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    connect(ui->tblRequests, &QAbstractItemView::doubleClicked, this, [this] { showRequestProperties(); });
}

void RequestView::initInfoPanel()
{
    ui->infoPanel->setTitle(tr("Свойства"));
    ui->infoPanel->setTitleVisible(false);
    d->infoPanel = new RequestInfoPanel(ui->infoPanel);
    ui->infoPanel->addWidget(d->infoPanel);
}

void RequestView::initActions()
{
    connect(ui->actionAddRequest, &QAction::triggered, this, [this] { addRequest(); });
    connect(ui->actionSettings, &QAction::triggered, this, [this] { showRequestProperties(); });
    connect(ui->actionConfirmRequest, &QAction::triggered, this, [this] { confirmRequest(); });
    connect(ui->actionRejectRequest, &QAction::triggered, this, [this] { rejectRequest(); });
    connect(ui->actionRemove, &QAction::triggered, this, [this] { removeRequests(); });
}

void RequestView::initPluginActions()
{
    d->toolHost = new QWidget(this);
    auto* layout = new QHBoxLayout(d->toolHost);
    layout->setSpacing(0);
    layout->setContentsMargins(0, 0, 0, 0);

    d->stackedToolBars = new VDStackedToolBars(d->toolHost);
    VDActionsInsertHelper::fillStackedWidget(d->stackedToolBars,
                                             {{{ui->actionAddRequest},
                                               {ui->actionSettings, ui->actionRemove},
                                               {ui->actionConfirmRequest, ui->actionRejectRequest}}});
    layout->addWidget(d->stackedToolBars);

    d->searchWidget = new SearchWidget(d->toolHost);
    d->searchWidget->setMaximumWidth(300);
    d->searchWidget->setPlaceholderText(tr("Фильтр по ФИО, табельному номеру, номеру заявки или времени"));
    d->searchWidget->showAdvancedButton(false);
    connect(d->searchWidget, &SearchWidget::startSearch, this, &RequestView::filter);
    layout->addWidget(d->searchWidget);

    ui->toolBar->addWidget(d->toolHost);
}

void RequestView::initFilterWidget()
{
    ui->filterToolBar->addWidget(ui->filterWidget);
    connect(ui->filterWidget, &RequestFilterWidget::filterChanged, this, &RequestView::filterChanged);
}

bool RequestView::eventFilter(QObject* watched, QEvent* event)
{
    // The keys work whatever the rights and the state of the actions say, and the table still
    // gets them.
    if (event->type() == QEvent::KeyPress && watched == ui->tblRequests) {
        switch (static_cast<QKeyEvent*>(event)->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            showRequestProperties(0, true);
            break;
        case Qt::Key_Insert:
            addRequest();
            break;
        case Qt::Key_Delete:
            removeRequests();
            break;
        default:
            break;
        }
    }
    return QObject::eventFilter(watched, event);
}

// --- header state and system log -------------------------------------------------------------

void RequestView::restoreHeaderState()
{
    qCDebug(rvc) << "restore header state";
    ui->tblRequests->restoreHeaderState(Settings::instance()->value(HeaderStateKey).toByteArray());
}

void RequestView::saveHeaderState(QByteArray header_state)
{
    qCDebug(rvc) << "save header state";
    Settings::instance()->setValue(HeaderStateKey, header_state);
    Settings::instance()->sync();
}

void RequestView::onSyslogActivated(std::pair<uint, QString> sa)
{
    SYSLOG_DATA entry;
    entry.code = sa.first;
    entry.user = QString::number(AuthData::userId());
    entry.time = QDateTime::currentDateTime();
    entry.text = sa.second;
    if (d->dataService)
        d->dataService->syslog(entry, bind(&RequestView::emptyHandler));
}

// --- pushed commands -------------------------------------------------------------------------

void RequestView::commandResult(Command& command)
{
    command.status = Command::StatusOk;
    unsigned int device = 0;
    QString deviceCommand;
    QHash<QString, QVariant> result;
    VDDataStream in(command.data);
    in >> device >> deviceCommand >> result;
    if (deviceCommand != DEVICE_COMMAND_READ_CARD)
        return;
    if (d->deviceService)
        d->deviceService->unbind(device, {DEVICE_COMMAND_READ_CARD}, bind(&RequestView::emptyHandler));
    if (result.value(QStringLiteral("status")).toString() == QLatin1String("error")) {
        emit cardReadFailed();
        return;
    }
    emit cardRead(ObjectInfo(result.value(QStringLiteral("card")).toByteArray()));
}

void RequestView::dbAsyncResult(Command& command)
{
    command.status = Command::StatusOk;
    QString id;
    int status = 0;
    QString error;
    VDDataStream in(command.data);
    in >> id >> status >> error;
    if (status == Command::StatusOk) {
        if (id.contains(QLatin1String("get_fingers")))
            getFingersHandler(command);
        return;
    }
    qCWarning(rvc) << "async error" << error;
}

void RequestView::asyncHandler(Command& command)
{
    qCDebug(rvc) << "async" << command.status;
}

void RequestView::emptyHandler(Command& command)
{
    if (command.status != Command::StatusOk)
        firstText(command);
}

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
        RequestSearchKeys::reindex(d->searchIndex, request, worker);
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
    VDTableView* table = ui->tblRequests;
    table->clearSelection();
    const QModelIndex row = d->proxy->mapFromSource(source);
    table->selectionModel()->setCurrentIndex(
        row, QItemSelectionModel::Select | QItemSelectionModel::Current | QItemSelectionModel::Rows);
    table->scrollTo(row, QAbstractItemView::PositionAtTop);
    table->setFocus(Qt::OtherFocusReason);
}

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

// --- filter and search -----------------------------------------------------------------------

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

// --- worker fingerprints and card reading ----------------------------------------------------

void RequestView::sendGetWorkerFingers(QList<TYPE_ID> uids)
{
    QStringList numbers;
    for (const TYPE_ID uid : qAsConst(uids))
        numbers.append(QString::number(uid));
    DbQuery query;
    query.queries.append(
        QStringLiteral("SELECT user_object_id, count( id ), (SELECT child_id FROM object_inherit WHERE ref_type = 3 "
                       "AND parent_id = user_object_id)  FROM fingers WHERE user_object_id = ANY( "
                       "ARRAY[%1]::bigint[] ) GROUP BY user_object_id;")
            .arg(numbers.join(QLatin1Char(','))));
    Command command = newCommand(QStringLiteral("db.async"), 8);
    VDDataStream out(&command.data, QIODevice::WriteOnly);
    out << d->clientId << QStringLiteral("get_fingers_%1").arg(QTime::currentTime().toString(QStringLiteral("hhmmsszzz")))
        << query;
    qCDebug(rvc) << "SEND" << query.queries;
    sendQuery(command, bind(&RequestView::asyncHandler));
}

void RequestView::getFingersHandler(Command& command)
{
    QString id;
    int status = 0;
    QString error;
    QList<DbResult> results;
    VDDataStream in(command.data);
    in >> id >> status >> error >> results;
    if (status != Command::StatusOk) {
        qCWarning(rvc) << "fail" << error;
        return;
    }
    if (results.isEmpty())
        return;
    const DbResult& rows = results.first();
    QHash<TYPE_ID, requestview::UserFingers> fingers;
    for (int row = 0; row < rows.rowCount; ++row) {
        requestview::UserFingers entry;
        entry.worker = rows.cell(row, 0).toUInt();
        entry.count = rows.cell(row, 1).toInt();
        entry.card = rows.cell(row, 2).toUInt();
        fingers.insert(entry.worker, entry);
    }
    emit fingersReceived(fingers);
}

void RequestView::fingerInfoRead(Command& command)
{
    if (command.status != Command::StatusOk) {
        emptyHandler(command);
        return;
    }
    QMap<unsigned int, TEMPLATE_DATA> templates;
    VDDataStream in(command.data);
    in >> templates;
    const QList<unsigned int> workers = templates.uniqueKeys();
    for (const unsigned int worker : workers) {
        unsigned int fingers = 0, palms = 0, airPalms = 0, faces = 0;
        const QList<TEMPLATE_DATA> own = templates.values(worker);
        for (const TEMPLATE_DATA& t : own) {
            if (t.index >= 0 && t.index <= 9)
                ++fingers;
            else if ((t.index == 100 || t.index == 101) && t.kind == 2)
                ++palms;
            else if ((t.index == 100 || t.index == 101) && t.kind == 3)
                ++airPalms;
            else if (t.index == 200 || t.index == 201)
                ++faces;
        }
        QVariantMap counts;
        counts.insert(QStringLiteral("fingers_count"), fingers);
        counts.insert(QStringLiteral("palm_count"), palms);
        counts.insert(QStringLiteral("airpalm_count"), airPalms);
        counts.insert(QStringLiteral("face_count"), faces);
        emit workerFingers(worker, counts);
    }
}

void RequestView::editFingerptints(TYPE_ID uid)
{
    Command command = newCommand();
    command.name = QStringLiteral("show:fingerprintwidget");
    command.type = 8;
    VDDataStream out(&command.data, QIODevice::WriteOnly);
    out << uid << d->clientId;
    sendQuery(command, bind(&RequestView::editBiometricsHandler));
}

void RequestView::editBiometricsHandler(Command& command)
{
    if (command.status == Command::StatusBiometricsLocked)
        QMessageBox::information(VDGuiGlobals::vdApp, tr("Персональные данные"),
                                 tr("Запрещено редактирование биометрической информации"), QMessageBox::Ok);
}

void RequestView::fingerprintDialogClosedHandler(Command& command)
{
    command.status = Command::StatusOk;
    qint32 worker = 0;
    VDDataStream in(command.data);
    in >> worker;
    if (in.atEnd()) {
        qCDebug(rvc) << "Templates none";
    } else {
        QList<TEMPLATE_DATA> templates;
        in >> templates;
        qCDebug(rvc) << "Templates" << templates.size();
        emit workerFingersScanned(TYPE_ID(worker), templates);
    }
    if (d->currentWorker != 0 && d->dataService)
        d->dataService->getUserFingers({d->currentWorker}, bind(&RequestView::fingerInfoRead));
}

void RequestView::sendReadCard(TYPE_ID dev)
{
    if (!d->deviceService)
        return;
    d->deviceService->bind(dev, {DEVICE_COMMAND_READ_CARD}, bind(&RequestView::emptyHandler));
    d->deviceService->readCard(dev, bind(&RequestView::emptyHandler));
}

// --- dialogs and wizards that are still to come ----------------------------------------------

void RequestView::showRequestProperties(TYPE_ID uid, bool first_show)
{
    qCDebug(rvc) << "properties of" << uid << first_show << "are not available yet";
}

void RequestView::addRequest()
{
    qCDebug(rvc) << "adding requests is not available yet";
}

void RequestView::removeRequests()
{
    qCDebug(rvc) << "removing requests is not available yet";
}
