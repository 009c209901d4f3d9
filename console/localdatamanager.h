#pragma once

#include "vdplugininterface.h"

#include <QObject>
#include <QPointer>

namespace vdserver {
class ObjectSource;
}

// The console's built-in plug-in "localdatamanager": keeps the local store equal to the
// server's objects, as the embedded server or the mirror of a standalone one hands them out. It
// starts before every loaded plug-in, so their tabs find the store full.
class LocalDataManager : public QObject, public VDPluginInterface
{
    Q_OBJECT
    Q_INTERFACES(VDPluginInterface)
public:
    explicit LocalDataManager(vdserver::ObjectSource* source, QObject* parent = nullptr);

    // Follows the source's changes from now on and takes over everything it holds.
    COMMAND_LIST init(VDServerInterface* server, const QString& path) override;
    // Stops following the source; the store keeps what it has.
    void uninit() override;
    QString pluginName() const override;
    int pluginVersion() const override;
    QString pluginBuild() const override;
    QWidget* widget() override;
    QObject* object() override;
    QStringList requireList() override;

private:
    QPointer<vdserver::ObjectSource> m_source;
};
