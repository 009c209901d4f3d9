#pragma once

#include "vdplugininterface.h"

#include <QObject>
#include <QPointer>

namespace vdserver {
class Server;
}

// The console's built-in plug-in "localdatamanager": keeps the local store equal to the
// server's objects. It starts before every loaded plug-in, so their tabs find the store full.
class LocalDataManager : public QObject, public VDPluginInterface
{
    Q_OBJECT
    Q_INTERFACES(VDPluginInterface)
public:
    explicit LocalDataManager(vdserver::Server* server, QObject* parent = nullptr);

    // Follows the server's changes from now on and takes over everything it holds.
    COMMAND_LIST init(VDServerInterface* server, const QString& path) override;
    // Stops following the server; the store keeps what it has.
    void uninit() override;
    QString pluginName() const override;
    int pluginVersion() const override;
    QString pluginBuild() const override;
    QWidget* widget() override;
    QObject* object() override;
    QStringList requireList() override;

private:
    QPointer<vdserver::Server> m_server;
};
