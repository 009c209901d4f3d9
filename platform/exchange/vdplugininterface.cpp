#include "vdplugininterface.h"

#include "platformlogging.h"
#include "vdserverinterface.h"

#include <QDateTime>
#include <QHash>
#include <QPointer>

// A query on its way: kept until its answer comes, so that a plug-in can tell what it waits for.
struct SubCommandsInfo
{
    QString name;
    qint64 sentAt = 0;
};

class VDPluginInterfacePrivate
{
public:
    VDServerInterface* server = nullptr;
    QList<CommandType> types;
    QHash<QString, VDPluginInterface::Handler> handlers;
    QHash<quint64, SubCommandsInfo> pending;
    // Answers check this token, so that none reaches a plug-in that has been destroyed.
    std::shared_ptr<int> alive = std::make_shared<int>(0);
};

VDPluginInterface::VDPluginInterface() : d(std::make_unique<VDPluginInterfacePrivate>())
{
    VDServerInterface::instance()->attach(this);
}

VDPluginInterface::~VDPluginInterface()
{
    if (auto* server = VDServerInterface::instance(false))
        server->detach(this);
}

COMMAND_LIST VDPluginInterface::init(VDServerInterface* server, const QString& path)
{
    Q_UNUSED(path)
    d->server = server;
    return {};
}

void VDPluginInterface::uninit() {}

void VDPluginInterface::initOnExchangeReady() {}

Command VDPluginInterface::newCommand() const
{
    Command command;
    command.id = server()->nextCommandId();
    return command;
}

Command VDPluginInterface::newCommand(const QString& name, int type) const
{
    Command command = newCommand();
    command.name = name;
    command.type = type;
    return command;
}

void VDPluginInterface::sendQuery(const Command& command, Handler callback)
{
    Command query = command;
    if (query.id == 0)
        query.id = server()->nextCommandId();
    d->pending.insert(query.id, {query.name, QDateTime::currentMSecsSinceEpoch()});
    std::weak_ptr<int> alive = d->alive;
    VDPluginInterfacePrivate* self = d.get();
    const quint64 id = query.id;
    server()->send(query, [alive, self, id, callback = std::move(callback)](Command& answer) {
        if (alive.expired()) {
            qCDebug(lcExchange) << "answer for a plug-in that is gone:" << answer.name;
            return;
        }
        self->pending.remove(id);
        if (callback)
            callback(answer);
    });
}

void VDPluginInterface::registerCommandHandler(const CommandType& type, Handler handler)
{
    if (!d->handlers.contains(type.name))
        d->types.append(type);
    d->handlers.insert(type.name, std::move(handler));
}

void VDPluginInterface::removeCommandType(const CommandType& type)
{
    d->handlers.remove(type.name);
    d->types.removeAll(type);
}

VDServerInterface* VDPluginInterface::server() const
{
    return d->server ? d->server : VDServerInterface::instance();
}

COMMAND_LIST VDPluginInterface::registeredCommandTypes() const
{
    return d->types;
}

bool VDPluginInterface::handlesCommand(const QString& name) const
{
    return d->handlers.contains(name);
}

bool VDPluginInterface::dispatchCommand(Command& command)
{
    const auto it = d->handlers.constFind(command.name);
    if (it == d->handlers.cend() || !*it)
        return false;
    // A copy: the handler may remove its own type while it runs.
    const Handler handler = *it;
    handler(command);
    return true;
}

int VDPluginInterface::pendingQueries() const
{
    return d->pending.size();
}
