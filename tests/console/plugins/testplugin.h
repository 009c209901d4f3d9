#pragma once

#include "pluginwidget.h"
#include "vdplugininterface.h"

// A console plug-in for the host's tests. Built once per situation, its name, requirements and
// visibility come from the build. Every call of the console is written down, as "name:call", in
// the application's property "lifecycle", where the test reads the order back.
class TestPlugin : public PluginWidget, public VDPluginInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "vd.test.TestPlugin")
    Q_INTERFACES(VDPluginInterface)
public:
    TestPlugin();

    bool canShow() const override;
    QList<PLUGIN_TAB> tabList() const override;
    void insertedToInterface() override;

    COMMAND_LIST init(VDServerInterface* server, const QString& path) override;
    void uninit() override;
    void initOnExchangeReady() override;
    QString pluginName() const override;
    int pluginVersion() const override;
    QString pluginBuild() const override;
    QWidget* widget() override;
    QObject* object() override;
    QStringList requireList() override;

private:
    void record(const QString& call) const;
};
