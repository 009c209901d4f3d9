#include "localdatamanager.h"

#include "consolelogging.h"
#include "localstorage.h"
#include "server.h"

using vorandel::LocalStorage;

LocalDataManager::LocalDataManager(vdserver::Server* server, QObject* parent)
    : QObject(parent), m_server(server)
{
}

COMMAND_LIST LocalDataManager::init(VDServerInterface* server, const QString& path)
{
    Q_ASSERT(m_server);
    const COMMAND_LIST types = VDPluginInterface::init(server, path);
    LocalStorage* store = LocalStorage::instance();
    connect(m_server, &vdserver::Server::objectsChanged, store, &LocalStorage::setObjects);
    connect(m_server, &vdserver::Server::objectsRemoved, store, &LocalStorage::removeObjects);
    connect(m_server, &vdserver::Server::settingsChanged, store, &LocalStorage::setDbSettings);
    connect(m_server, &vdserver::Server::schedulesChanged, store, &LocalStorage::setSchedules);
    m_server->publish();
    qCDebug(lcConsole) << "local store filled from the server";
    return types;
}

void LocalDataManager::uninit()
{
    if (m_server)
        m_server->disconnect(LocalStorage::instance());
}

QString LocalDataManager::pluginName() const
{
    return QStringLiteral("localdatamanager");
}

int LocalDataManager::pluginVersion() const
{
    return 0x10000;
}

QString LocalDataManager::pluginBuild() const
{
    return QStringLiteral("1.0");
}

QWidget* LocalDataManager::widget()
{
    return nullptr;
}

QObject* LocalDataManager::object()
{
    return this;
}

QStringList LocalDataManager::requireList()
{
    return {};
}
