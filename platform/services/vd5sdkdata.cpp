#include "vd5sdkdata.h"

#include "platformlogging.h"
#include "vddatastream.h"
#include "vdplugininterface.h"

namespace vd5sdk {

Data::Data(VDPluginInterface* plugin, const QByteArray& sessionId)
    : QObject(plugin ? plugin->object() : nullptr), m_plugin(plugin), m_sessionId(sessionId)
{
}

template <typename... Args>
void Data::call(const char* operation, Callback callback, const Args&... args)
{
    Command command = m_plugin->newCommand(QLatin1String("data.") + QLatin1String(operation), 8);
    VDDataStream out(&command.data, QIODevice::WriteOnly);
    out << m_sessionId;
    (out << ... << args);
    qCDebug(lcServices) << "call" << command.name;
    m_plugin->sendQuery(command, std::move(callback));
}

void Data::addObject(const vorandel::ObjectInfo& object, Callback callback)
{
    call("addObject", std::move(callback), object);
}

void Data::updateObject(const vorandel::ObjectInfo& object, Callback callback)
{
    call("updateObject", std::move(callback), object);
}

void Data::updateObjectEx(const vorandel::ObjectInfo& object, Callback callback)
{
    call("updateObjectEx", std::move(callback), object);
}

void Data::removeObject(const vorandel::ObjectInfo& object, Callback callback)
{
    call("removeObject", std::move(callback), object);
}

void Data::addObjectInherits(const QList<vorandel::INHERIT_DATA>& inherits, Callback callback)
{
    call("addObjectInherits", std::move(callback), inherits);
}

void Data::changeUserAccess(const QList<vorandel::ACCESS_CHANGES>& changes, Callback callback)
{
    call("changeUserAccess", std::move(callback), changes);
}

void Data::updateWorkerCards(vorandel::TYPE_ID worker, const QList<vorandel::ObjectInfo>& toAdd,
                             const QList<vorandel::ObjectInfo>& toRemove, bool replace, Callback callback)
{
    call("updateWorkerCards", std::move(callback), worker, toAdd, toRemove, replace);
}

void Data::getUserFingers(const QList<unsigned int>& workers, Callback callback)
{
    call("getUserFingers", std::move(callback), workers);
}

void Data::setUserFingers(vorandel::TYPE_ID worker, const QList<vorandel::TEMPLATE_DATA>& templates, Callback callback)
{
    call("setUserFingers", std::move(callback), worker, templates);
}

void Data::getBlobDataChange(const QList<vorandel::BLOB_DATA_RESQUEST>& requests, Callback callback)
{
    call("getBlobDataChange", std::move(callback), requests);
}

void Data::syslog(const vorandel::SYSLOG_DATA& entry, Callback callback)
{
    call("syslog", std::move(callback), entry);
}

void Data::dismissWorker(vorandel::TYPE_ID worker, const QDate& date, Callback callback)
{
    call("dismissWorker", std::move(callback), worker, date);
}

}  // namespace vd5sdk
