#pragma once

#include "command.h"
#include "objectinfo.h"
#include "objectsource.h"
#include "servicerecords.h"
#include "vdhash.h"

#include <QHash>
#include <QPointer>
#include <QSet>
#include <QString>

#include <map>

namespace vdserver {

class ServerClient;

// The copy of a standalone server's objects at a console: as much of them as its user may see,
// filled by the server's pushes ("store.*") and kept current by them.
//
// follow() asks for the whole copy, and the client's every reconnection asks again: the copy that
// comes then replaces what the mirror held, so that whatever changed or went while the console
// was away is brought up to date. Only what differs is announced.
class StoreMirror : public ObjectSource
{
    Q_OBJECT
public:
    explicit StoreMirror(ServerClient* client, QObject* parent = nullptr);

    // Asks for the whole copy; loading and then synced follow, or failed.
    void follow();
    // Whether the last copy asked for has come whole.
    bool isSynced() const { return m_synced; }

    // A dataname's objects; null for one that never came.
    const vorandel::OBJECT_HASH* objects(const QString& dataname) const;
    QHash<QString, QString> settings() const { return m_settings; }
    void publish() override;

signals:
    // While a copy comes: objects received of all that it holds.
    void loading(int received, int total);
    void synced();
    void failed(const QString& reason);

private:
    void take(const Command& command);
    void takeObjects(const QString& dataname, const QList<vorandel::ObjectInfo>& objects);
    void takeRemoved(const QString& dataname, const QList<vorandel::TYPE_ID>& uids);
    void finishCopy();

    QPointer<ServerClient> m_client;
    std::map<QString, vorandel::OBJECT_HASH> m_tables;
    QHash<QString, QString> m_settings;
    VDHash<int, vorandel::SCHEDULE_DATA> m_schedules;

    bool m_synced = false;
    bool m_copying = false;
    int m_total = 0;
    int m_received = 0;
    QHash<QString, QSet<vorandel::TYPE_ID>> m_seen;  // of the copy that is coming
};

}  // namespace vdserver
