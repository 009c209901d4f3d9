#include "vdserverinterface.h"

#include "exchangetransport.h"
#include "platformlogging.h"
#include "processwide.h"
#include "vddatastream.h"
#include "vdplugininterface.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThread>

namespace {
const QString LocalPluginsInfo = QStringLiteral("exchange.local_plugins_info");

// Runs `fn` in a later turn of the GUI thread's event loop.
void later(QObject* context, std::function<void()> fn)
{
    QMetaObject::invokeMethod(context, std::move(fn), Qt::QueuedConnection);
}
}  // namespace

VDServerInterface* VDServerInterface::instance(bool create)
{
    return ProcessWide<VDServerInterface>::get(create, [] { return new VDServerInterface; });
}

VDServerInterface::VDServerInterface() = default;

VDServerInterface::~VDServerInterface() = default;

void VDServerInterface::setTransport(ExchangeTransport* transport)
{
    const bool wasReady = isExchangeReady();
    m_transport = transport;
    if (!wasReady && isExchangeReady()) {
        for (const Entry& entry : qAsConst(m_plugins)) {
            if (entry.temporary)
                entry.plugin->initOnExchangeReady();
        }
        emit exchangeReady();
    }
}

ExchangeTransport* VDServerInterface::transport() const
{
    return m_transport;
}

bool VDServerInterface::isExchangeReady() const
{
    return m_transport != nullptr;
}

void VDServerInterface::send(const Command& query, std::function<void(Command&)> reply)
{
    qCDebug(lcExchange) << "send" << query;
    if (!m_transport) {
        qCWarning(lcExchange) << "no exchange: query" << query.name << "fails";
        Command failed = query;
        failed.status = Command::StatusFailed;
        failed.data.clear();
        VDDataStream out(&failed.data, QIODevice::WriteOnly);
        out << tr("Нет связи с сервером");
        later(this, [reply, failed]() mutable { reply(failed); });
        return;
    }
    // The transport may answer at once or from another thread; the caller must not notice.
    auto sending = std::make_shared<bool>(true);
    QPointer<VDServerInterface> self(this);
    m_transport->send(query, [sending, self, reply](Command& answer) {
        if (!self)
            return;
        if (*sending || QThread::currentThread() != self->thread()) {
            later(self, [reply, answer]() mutable { reply(answer); });
            return;
        }
        reply(answer);
    });
    *sending = false;
}

void VDServerInterface::deliver(Command& command)
{
    bool handled = false;
    // A copy: a handler may add or remove plug-ins.
    const QList<VDPluginInterface*> live = m_live;
    for (VDPluginInterface* plugin : live) {
        if (m_live.contains(plugin) && plugin->handlesCommand(command.name))
            handled = plugin->dispatchCommand(command) || handled;
    }
    if (!handled) {
        qCWarning(lcExchange) << "unknown command dropped:" << command.name;
        emit commandDropped(command.name);
    }
}

void VDServerInterface::addPlugin(VDPluginInterface* plugin, const COMMAND_LIST& types)
{
    if (Entry* entry = entryOf(plugin)) {
        entry->types = types;
        return;
    }
    m_plugins.append({plugin, types, false});
}

void VDServerInterface::removePlugin(VDPluginInterface* plugin)
{
    for (int i = 0; i < m_plugins.size(); ++i) {
        if (m_plugins.at(i).plugin == plugin) {
            m_plugins.removeAt(i);
            return;
        }
    }
}

QList<VDPluginInterface*> VDServerInterface::queryPlugins() const
{
    QList<VDPluginInterface*> plugins;
    plugins.reserve(m_plugins.size());
    for (const Entry& entry : m_plugins)
        plugins.append(entry.plugin);
    return plugins;
}

void VDServerInterface::addCommandType(const CommandType& type, VDPluginInterface* plugin)
{
    Entry* entry = entryOf(plugin);
    if (!entry) {
        m_plugins.append({plugin, {}, false});
        entry = &m_plugins.last();
    }
    if (!entry->types.contains(type))
        entry->types.append(type);
}

void VDServerInterface::sendLocalPluginsInfo()
{
    const COMMAND_LIST types = localCommandTypes();
    emit localPluginsInfoSent(types);
    if (!m_transport)
        return;
    Command info;
    info.id = nextCommandId();
    info.type = 8;
    info.name = LocalPluginsInfo;
    VDDataStream out(&info.data, QIODevice::WriteOnly);
    out << types;
    send(info, [](Command& answer) {
        if (answer.status != Command::StatusOk)
            qCWarning(lcExchange) << "fail: the exchange refused the list of local command types";
    });
}

COMMAND_LIST VDServerInterface::localCommandTypes() const
{
    // A type whose handler the plug-in has removed can no longer be received: it is left out.
    COMMAND_LIST all;
    for (const Entry& entry : m_plugins) {
        for (const CommandType& type : entry.types) {
            if (entry.plugin->handlesCommand(type.name) && !all.contains(type))
                all.append(type);
        }
    }
    return all;
}

void VDServerInterface::addTemporaryPlugin(VDPluginInterface* plugin)
{
    if (entryOf(plugin))
        return;
    m_plugins.append({plugin, {}, true});
    const COMMAND_LIST types = plugin->init(this, plugin->pluginName());
    if (Entry* entry = entryOf(plugin))
        entry->types = types;
    if (isExchangeReady())
        plugin->initOnExchangeReady();
    sendLocalPluginsInfo();
}

void VDServerInterface::removeTemporaryPlugin(VDPluginInterface* plugin)
{
    removePlugin(plugin);
    sendLocalPluginsInfo();
}

void VDServerInterface::attach(VDPluginInterface* plugin)
{
    if (!m_live.contains(plugin))
        m_live.append(plugin);
}

void VDServerInterface::detach(VDPluginInterface* plugin)
{
    m_live.removeAll(plugin);
    removePlugin(plugin);
}

quint64 VDServerInterface::nextCommandId()
{
    return ++m_lastCommandId;
}

VDServerInterface::Entry* VDServerInterface::entryOf(VDPluginInterface* plugin)
{
    for (Entry& entry : m_plugins) {
        if (entry.plugin == plugin)
            return &entry;
    }
    return nullptr;
}
