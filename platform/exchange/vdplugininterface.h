#pragma once

#include "command.h"
#include "vdplatform_export.h"

#include <QStringList>
#include <QtPlugin>

#include <functional>
#include <memory>

class QObject;
class QWidget;
class VDServerInterface;
class VDPluginInterfacePrivate;

// A plug-in of the console as the exchange sees it: its life cycle, its command types with
// their handlers, and the queries it sends. Handlers and answers always run on the GUI thread,
// in a later turn of the event loop than the call that caused them.
class VDPLATFORM_EXPORT VDPluginInterface
{
public:
    using Handler = std::function<void(Command&)>;

    VDPluginInterface();
    virtual ~VDPluginInterface();

    // Stores the server; returns the interface's own command types (none), to which a
    // subclass appends its own.
    virtual COMMAND_LIST init(VDServerInterface* server, const QString& path);
    virtual void uninit();
    virtual void initOnExchangeReady();
    virtual QString pluginName() const = 0;
    virtual int pluginVersion() const = 0;  // the major number in the upper 16 bits
    virtual QString pluginBuild() const = 0;
    virtual QWidget* widget() = 0;
    virtual QObject* object() = 0;
    virtual QStringList requireList() = 0;

    Command newCommand() const;
    Command newCommand(const QString& name, int type) const;
    // Sends the command; `callback` gets the answer once. An answer that arrives after this
    // plug-in is gone is dropped.
    void sendQuery(const Command& command, Handler callback);
    // From now on every command of this name that reaches this plug-in calls `handler`.
    void registerCommandHandler(const CommandType& type, Handler handler);
    void removeCommandType(const CommandType& type);

    // The server given to init, or the process-wide one before that.
    VDServerInterface* server() const;
    // The types that have a handler, in the order of registration.
    COMMAND_LIST registeredCommandTypes() const;
    bool handlesCommand(const QString& name) const;
    // Hands a pushed command to the handler of its name; false if there is none.
    bool dispatchCommand(Command& command);
    // Queries sent and not answered yet.
    int pendingQueries() const;

private:
    Q_DISABLE_COPY(VDPluginInterface)
    std::unique_ptr<VDPluginInterfacePrivate> d;
};

#define VDPluginInterface_iid "vorandel.vdservice.VDPluginInterface/1.0"
Q_DECLARE_INTERFACE(VDPluginInterface, VDPluginInterface_iid)
