#pragma once

#include "command.h"
#include "objectinfo.h"
#include "servicerecords.h"
#include "vdplatform_export.h"

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QObject>

#include <functional>

class VDPluginInterface;

namespace vd5sdk {

// Client of the data service. Each operation goes out as one command of type 8 named "data."
// and the operation's name; its payload is the session id and then the arguments in order.
// The callback gets the answer once, on the GUI thread.
class VDPLATFORM_EXPORT Data : public QObject
{
    Q_OBJECT
public:
    using Callback = std::function<void(Command&)>;

    // The client belongs to the plug-in's object and lives as long as it.
    Data(VDPluginInterface* plugin, const QByteArray& sessionId);

    void addObject(const vorandel::ObjectInfo& object, Callback callback);
    void updateObject(const vorandel::ObjectInfo& object, Callback callback);
    void updateObjectEx(const vorandel::ObjectInfo& object, Callback callback);
    void removeObject(const vorandel::ObjectInfo& object, Callback callback);
    void addObjectInherits(const QList<vorandel::INHERIT_DATA>& inherits, Callback callback);
    void changeUserAccess(const QList<vorandel::ACCESS_CHANGES>& changes, Callback callback);
    void updateWorkerCards(vorandel::TYPE_ID worker, const QList<vorandel::ObjectInfo>& toAdd,
                           const QList<vorandel::ObjectInfo>& toRemove, bool replace, Callback callback);
    void getUserFingers(const QList<unsigned int>& workers, Callback callback);
    // Replaces all templates of a worker.
    void setUserFingers(vorandel::TYPE_ID worker, const QList<vorandel::TEMPLATE_DATA>& templates, Callback callback);
    void getBlobDataChange(const QList<vorandel::BLOB_DATA_RESQUEST>& requests, Callback callback);
    void syslog(const vorandel::SYSLOG_DATA& entry, Callback callback);
    void dismissWorker(vorandel::TYPE_ID worker, const QDate& date, Callback callback);

    QByteArray sessionId() const { return m_sessionId; }

private:
    template <typename... Args>
    void call(const char* operation, Callback callback, const Args&... args);

    VDPluginInterface* m_plugin;
    QByteArray m_sessionId;
};

}  // namespace vd5sdk
