#pragma once

#include "command.h"
#include "vdplatform_export.h"

#include <QObject>
#include <QStringList>

#include <functional>

class VDPluginInterface;

namespace vd5sdk {

// Client of the device service. Each operation goes out as one command of type 8 named
// "devices." and the operation's name; its payload is the identity and then the arguments.
// Results of device commands come back to the identity as "command_result:<identity>".
class VDPLATFORM_EXPORT Devices : public QObject
{
    Q_OBJECT
public:
    using Callback = std::function<void(Command&)>;

    Devices(const QString& identity, VDPluginInterface* plugin);

    // Starts (stops) receiving the results of these commands from this device.
    void bind(unsigned int device, const QStringList& commands, Callback callback);
    void unbind(unsigned int device, const QStringList& commands, Callback callback);
    // Asks the device to read a card; the card arrives as a device result.
    void readCard(unsigned int device, Callback callback);

    QString identity() const { return m_identity; }

private:
    template <typename... Args>
    void call(const char* operation, Callback callback, const Args&... args);

    QString m_identity;
    VDPluginInterface* m_plugin;
};

}  // namespace vd5sdk
