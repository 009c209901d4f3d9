#include "requestview.h"

#include "requestview_p.h"
#include "ui_requestview.h"

#include "authdata.h"
#include "constants.h"
#include "hiddenpanel.h"
#include "localstorage.h"
#include "requestfilterwidget.h"
#include "requestinfopanel.h"
#include "requestviewlogging.h"
#include "searchwidget.h"
#include "settings.h"
#include "vd5sdkdata.h"
#include "vd5sdkdevices.h"
#include "vdactionsinserthelper.h"
#include "vddatastream.h"
#include "vdserverinterface.h"
#include "vdstackedtoolbars.h"
#include "vdtableview.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QHostInfo>
#include <QKeyEvent>
#include <QNetworkInterface>
#include <QTimer>

using namespace vorandel;
using namespace requestview::detail;

namespace {

const QString HeaderStateKey = QStringLiteral("requestview/header_state");
const QString BuildNumber = QStringLiteral("1777379737");

QString makeClientId(const QString& pluginName)
{
    const QString monitoringId =
        Settings::instance()->value(QStringLiteral("monitoring/id"), QStringLiteral("1")).toString();
    return QStringList{pluginName, monitoringId, hostAddress(), QString::number(QDateTime::currentSecsSinceEpoch())}
        .join(QLatin1Char(' '));
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

namespace requestview::detail {

QString hostAddress()
{
    QStringList addresses;
    const QList<QHostAddress> all = QNetworkInterface::allAddresses();
    for (const QHostAddress& address : all)
        addresses.append(address.toString());
    addresses.removeOne(QStringLiteral("127.0.0.1"));
    addresses.removeOne(QStringLiteral("::1"));
    return addresses.isEmpty() ? QHostInfo::localHostName() : addresses.first();
}

QString firstText(const Command& command)
{
    QString text;
    VDDataStream in(command.data);
    in >> text;
    return text;
}

}  // namespace requestview::detail
