#include "vd5sdkdevices.h"

#include "platformlogging.h"
#include "vddatastream.h"
#include "vdplugininterface.h"

namespace vd5sdk {

Devices::Devices(const QString& identity, VDPluginInterface* plugin)
    : QObject(plugin ? plugin->object() : nullptr), m_identity(identity), m_plugin(plugin)
{
}

template <typename... Args>
void Devices::call(const char* operation, Callback callback, const Args&... args)
{
    Command command = m_plugin->newCommand(QLatin1String("devices.") + QLatin1String(operation), 8);
    VDDataStream out(&command.data, QIODevice::WriteOnly);
    out << m_identity;
    (out << ... << args);
    qCDebug(lcServices) << "call" << command.name;
    m_plugin->sendQuery(command, std::move(callback));
}

void Devices::bind(unsigned int device, const QStringList& commands, Callback callback)
{
    call("bind", std::move(callback), device, commands);
}

void Devices::unbind(unsigned int device, const QStringList& commands, Callback callback)
{
    call("unbind", std::move(callback), device, commands);
}

void Devices::readCard(unsigned int device, Callback callback)
{
    call("readCard", std::move(callback), device);
}

}  // namespace vd5sdk
