#include "localdatamanager.h"

#include "consolelogging.h"
#include "localstorage.h"
#include "objectsource.h"

using vorandel::LocalStorage;

LocalDataManager::LocalDataManager(vdserver::ObjectSource* source, QObject* parent)
    : QObject(parent), m_source(source)
{
}

COMMAND_LIST LocalDataManager::init(VDServerInterface* server, const QString& path)
{
    Q_ASSERT(m_source);
    const COMMAND_LIST types = VDPluginInterface::init(server, path);
    LocalStorage* store = LocalStorage::instance();
    connect(m_source, &vdserver::ObjectSource::objectsChanged, store, &LocalStorage::setObjects);
    connect(m_source, &vdserver::ObjectSource::objectsRemoved, store, &LocalStorage::removeObjects);
    connect(m_source, &vdserver::ObjectSource::settingsChanged, store, &LocalStorage::setDbSettings);
    connect(m_source, &vdserver::ObjectSource::schedulesChanged, store, &LocalStorage::setSchedules);
    m_source->publish();
    qCDebug(lcConsole) << "local store filled from the server";
    return types;
}

void LocalDataManager::uninit()
{
    if (m_source)
        m_source->disconnect(LocalStorage::instance());
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
