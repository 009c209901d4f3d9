#include "requestcardwizardpage.h"

#include "ui_requestcardwizardpage.h"

#include "constants.h"
#include "localstorage.h"
#include "requestview_p.h"
#include "vd5sdkdevices.h"
#include "vddatastream.h"
#include "vdserverinterface.h"

#include <QDateTime>
#include <QDebug>

using namespace vorandel;

RequestCardWizardPage::RequestCardWizardPage(QWidget* parent)
    : VDWizardPage(parent), ui(std::make_unique<Ui_RequestCardWizardPage>())
{
    ui->setupUi(this);
    ui->cardWidget->showBlock(WorkerCardView::PinBlock, false);
    ui->cardWidget->showSubPage(0);
    connect(ui->cardWidget, &WorkerCardView::readCard, this, &RequestCardWizardPage::sendReadCard);
    connect(ui->cardWidget, &WorkerCardView::showMessage, this, &RequestCardWizardPage::showMessage);
    connect(ui->cardWidget, &WorkerCardView::showCriticalMessage, this, &RequestCardWizardPage::showCriticalMessage);
    VDServerInterface::instance(false)->addTemporaryPlugin(this);
}

RequestCardWizardPage::~RequestCardWizardPage()
{
    VDServerInterface::instance(false)->removeTemporaryPlugin(this);
}

COMMAND_LIST RequestCardWizardPage::init(VDServerInterface* server, const QString& name)
{
    qDebug() << "virtual COMMAND_LIST RequestCardWizardPage::init(VDServerInterface*, const QString&)";
    m_exchangeName = QStringList{pluginName(), requestview::detail::hostAddress(), QString::number(QDateTime::currentSecsSinceEpoch())}.join(
        QLatin1Char(' '));
    COMMAND_LIST types = VDPluginInterface::init(server, name);
    const CommandType result(8, QStringLiteral("command_result:%1").arg(m_exchangeName));
    types << result;
    registerCommandHandler(result, [this](Command& command) { commandResult(command); });
    return types;
}

void RequestCardWizardPage::uninit()
{
    qDebug() << "virtual void RequestCardWizardPage::uninit()";
}

void RequestCardWizardPage::initOnExchangeReady()
{
    qDebug() << "virtual void RequestCardWizardPage::initOnExchangeReady()";
    m_devices = new vd5sdk::Devices(m_exchangeName, this);
}

QString RequestCardWizardPage::pluginName() const
{
    return QStringLiteral("RequestCardWizardPage");
}

QObject* RequestCardWizardPage::object()
{
    return this;
}

QWidget* RequestCardWizardPage::widget()
{
    return this;
}

int RequestCardWizardPage::pluginVersion() const
{
    return 0x10000;
}

QString RequestCardWizardPage::pluginBuild() const
{
    return QStringLiteral("1.0");
}

QStringList RequestCardWizardPage::requireList()
{
    return {};
}

QHash<QString, QString> RequestCardWizardPage::subjectProperties() const
{
    return ui->cardWidget->editedProperties();
}

void RequestCardWizardPage::setSubjectUid(TYPE_ID uid)
{
    const LocalStorage* store = LocalStorage::instance();
    const OBJECT_HASH* subjects = store->constObjects(SUBJECT_DATANAME);
    OBJECT_HASH shown;
    shown.insert(uid, subjects ? subjects->value(uid) : ObjectInfo());
    ui->cardWidget->setCurrent(shown);
    if (const OBJECT_HASH* devices = store->constObjects(DEVICE_DATANAME)) {
        for (const ObjectInfo& device : *devices) {
            if (device.parameters.value(QStringLiteral("PT_OBJECTSTATE")).toLower() != QLatin1String("d"))
                ui->cardWidget->addDevice(device);
        }
    }
}

void RequestCardWizardPage::sendReadCard(TYPE_ID dev)
{
    m_device = dev;
    if (!m_devices) {
        qDebug() << "RequestCardWizardPage no exchange yet, no read on" << dev;
        ui->cardWidget->cardReadFailed();
        return;
    }
    m_devices->bind(dev, {DEVICE_COMMAND_READ_CARD}, [this](Command& command) { bindForReadCard(command); });
}

void RequestCardWizardPage::bindForReadCard(Command& command)
{
    if (command.status != Command::StatusOk) {
        ui->cardWidget->cardReadFailed();
        return;
    }
    m_devices->readCard(m_device, [this](Command& answer) { emptyHandler(answer); });
}

void RequestCardWizardPage::commandResult(Command& command)
{
    command.status = Command::StatusOk;
    unsigned int device = 0;
    QString deviceCommand;
    QHash<QString, QVariant> parameters;
    VDDataStream in(command.data);
    in >> device >> deviceCommand >> parameters;
    qDebug() << "RequestCardWizardPage result" << device << deviceCommand << parameters;
    if (deviceCommand != DEVICE_COMMAND_READ_CARD)
        return;
    m_devices->unbind(device, {deviceCommand}, [this](Command& answer) { emptyHandler(answer); });
    if (parameters.value(QStringLiteral("status")).toString() == QLatin1String("error")) {
        ui->cardWidget->cardReadFailed();
        return;
    }
    ui->cardWidget->cardRead(ObjectInfo(parameters.value(QStringLiteral("card")).toByteArray()));
}

void RequestCardWizardPage::emptyHandler(Command& command)
{
    qDebug() << "RequestCardWizardPage command" << command.name << "result" << command.status;
}
