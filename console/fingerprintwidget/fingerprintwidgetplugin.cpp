#include "fingerprintwidgetplugin.h"

#include "authdata.h"
#include "fingerprintlogging.h"
#include "fingerprintwidget.h"
#include "vd5sdkdata.h"
#include "vddatastream.h"

namespace {
const QString ShowCommand = QStringLiteral("show:fingerprintwidget");
const QString ScanCommand = QStringLiteral("show:fingerprintwidget.scan");
}  // namespace

FingerprintWidgetPlugin::FingerprintWidgetPlugin(QObject* parent) : QObject(parent) {}

FingerprintWidgetPlugin::~FingerprintWidgetPlugin()
{
    delete m_widget.data();
}

COMMAND_LIST FingerprintWidgetPlugin::init(VDServerInterface* server, const QString& path)
{
    COMMAND_LIST types = VDPluginInterface::init(server, path);
    for (const QString& name : {ShowCommand, ScanCommand}) {
        const CommandType type(8, name);
        registerCommandHandler(type, [this](Command& command) { showWindow(command); });
        types << type;
    }
    return types;
}

void FingerprintWidgetPlugin::initOnExchangeReady()
{
    if (!m_data)
        m_data = new vd5sdk::Data(this, AuthData::sessionId());
    if (m_widget)
        m_widget->setDataService(m_data);
}

QString FingerprintWidgetPlugin::pluginName() const
{
    return QStringLiteral("fingerprintwidget");
}

int FingerprintWidgetPlugin::pluginVersion() const
{
    return 0x10000;
}

QString FingerprintWidgetPlugin::pluginBuild() const
{
    return QStringLiteral("1.0");
}

QWidget* FingerprintWidgetPlugin::widget()
{
    if (!m_widget) {
        m_widget = new FingerprintWidget;
        m_widget->setWindowFlags(Qt::Dialog);
        m_widget->setDataService(m_data);
        connect(m_widget, &FingerprintWidget::closed, this, &FingerprintWidgetPlugin::windowClosed);
    }
    return m_widget;
}

QObject* FingerprintWidgetPlugin::object()
{
    return this;
}

QStringList FingerprintWidgetPlugin::requireList()
{
    return {QStringLiteral("localdatamanager")};
}

void FingerprintWidgetPlugin::showWindow(Command& command)
{
    command.status = Command::StatusOk;
    unsigned int worker = 0;
    QString caller;
    VDDataStream in(command.data);
    in >> worker >> caller;
    auto* window = static_cast<FingerprintWidget*>(widget());
    if (!window->isWindow()) {
        qCWarning(lcFingerprint) << "the window is part of a page now; not opened for" << caller;
        return;
    }
    if (window->isVisible() && m_reportTo != caller)
        qCInfo(lcFingerprint) << "the window goes over from" << m_reportTo << "to" << caller;
    m_reportTo = caller;
    window->setUser(worker);
    window->setWindowModality(Qt::ApplicationModal);
    window->show();
    window->raise();
    window->activateWindow();
    if (command.name == ScanCommand)
        window->scan();
}

void FingerprintWidgetPlugin::windowClosed()
{
    if (m_reportTo.isEmpty())
        return;
    Command report = newCommand(QStringLiteral("fingerprint.finished:") + m_reportTo, 8);
    VDDataStream out(&report.data, QIODevice::WriteOnly);
    out << qint32(m_widget->user());
    // Nothing after the worker means nothing was stored.
    if (m_widget->isChanged())
        out << m_widget->templates();
    m_reportTo.clear();
    sendQuery(report, [](Command& answer) {
        if (answer.status != Command::StatusOk)
            qCWarning(lcFingerprint) << "fail: the end of enrolment was not delivered" << answer.status;
    });
}
