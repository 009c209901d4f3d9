#pragma once

#include "command.h"
#include "vdplatform_export.h"

#include <QList>
#include <QObject>

#include <functional>

class ExchangeTransport;
class VDPluginInterface;

// The link between the plug-ins of this process and the server exchange. Queries go to the
// transport; commands that the server pushes come in through deliver().
class VDPLATFORM_EXPORT VDServerInterface : public QObject
{
    Q_OBJECT
public:
    // The process-wide object; with create false, null until somebody has made it.
    static VDServerInterface* instance(bool create = true);
    ~VDServerInterface() override;

    // Where queries go; null cuts the exchange off (queries then fail at once).
    void setTransport(ExchangeTransport* transport);
    ExchangeTransport* transport() const;
    bool isExchangeReady() const;

    // Sends a query. `reply` runs once, on the GUI thread, never inside this call.
    void send(const Command& query, std::function<void(Command&)> reply);
    // A command pushed by the server: handed to the handler registered for its name, if any.
    void deliver(Command& command);

    // Plug-ins loaded by the console, in load order, with the command types their init gave.
    void addPlugin(VDPluginInterface* plugin, const COMMAND_LIST& types = {});
    void removePlugin(VDPluginInterface* plugin);
    QList<VDPluginInterface*> queryPlugins() const;

    // Adds a type to a plug-in after init.
    void addCommandType(const CommandType& type, VDPluginInterface* plugin);
    // Tells the exchange the current types of the local plug-ins.
    void sendLocalPluginsInfo();
    COMMAND_LIST localCommandTypes() const;

    // A plug-in that lives as long as a page: it gets init, and initOnExchangeReady once the
    // exchange is up, like a loaded one.
    void addTemporaryPlugin(VDPluginInterface* plugin);
    void removeTemporaryPlugin(VDPluginInterface* plugin);

    // Every live plug-in interface of the process registers itself here; deliver() looks
    // through them for a handler.
    void attach(VDPluginInterface* plugin);
    void detach(VDPluginInterface* plugin);

    quint64 nextCommandId();

signals:
    void exchangeReady();
    void localPluginsInfoSent(const COMMAND_LIST& types);
    void commandDropped(const QString& name);

private:
    VDServerInterface();

    struct Entry {
        VDPluginInterface* plugin;
        COMMAND_LIST types;
        bool temporary;
    };
    Entry* entryOf(VDPluginInterface* plugin);

    ExchangeTransport* m_transport = nullptr;
    QList<Entry> m_plugins;
    QList<VDPluginInterface*> m_live;
    quint64 m_lastCommandId = 0;
};
