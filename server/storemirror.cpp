#include "storemirror.h"

#include "serverclient.h"
#include "serverlogging.h"
#include "vddatastream.h"
#include "wire.h"

#include <algorithm>

namespace vdserver {

using vorandel::ObjectInfo;
using vorandel::TYPE_ID;

StoreMirror::StoreMirror(ServerClient* client, QObject* parent) : ObjectSource(parent), m_client(client)
{
    connect(client, &ServerClient::pushed, this, &StoreMirror::take);
    connect(client, &ServerClient::reconnected, this, &StoreMirror::follow);
    connect(client, &ServerClient::connectionLost, this, [this] { m_synced = false; });
}

void StoreMirror::follow()
{
    if (!m_client)
        return;
    m_synced = false;
    Command query;
    query.type = 8;
    query.name = wire::Snapshot;
    m_client->send(query, [this, guard = QPointer<StoreMirror>(this)](Command& answer) {
        if (!guard || answer.ok())
            return;
        QString reason;
        VDDataStream in(answer.data);
        in >> reason;
        m_copying = false;
        qCWarning(lcServer).noquote() << "no copy of the store:" << reason;
        emit failed(reason);
    });
}

const vorandel::OBJECT_HASH* StoreMirror::objects(const QString& dataname) const
{
    const auto it = m_tables.find(dataname);
    return it == m_tables.end() ? nullptr : &it->second;
}

void StoreMirror::publish()
{
    for (const auto& [dataname, objects] : m_tables)
        emit objectsChanged(dataname, objects.values());
    emit settingsChanged(m_settings);
    emit schedulesChanged(m_schedules);
}

void StoreMirror::take(const Command& command)
{
    if (!command.name.startsWith(QLatin1String("store.")))
        return;
    VDDataStream in(command.data);
    QString dataname;
    if (command.name == wire::StoreObjects) {
        QList<ObjectInfo> objects;
        if (vdstream::readAll(in, dataname, objects))
            takeObjects(dataname, objects);
    } else if (command.name == wire::StoreRemoved) {
        QList<TYPE_ID> uids;
        if (vdstream::readAll(in, dataname, uids))
            takeRemoved(dataname, uids);
    } else if (command.name == wire::StoreSettings) {
        QHash<QString, QString> settings;
        if (vdstream::readAll(in, settings)) {
            m_settings = settings;
            emit settingsChanged(m_settings);
        }
    } else if (command.name == wire::StoreSchedules) {
        QHash<int, vorandel::SCHEDULE_DATA> schedules;
        if (vdstream::readAll(in, schedules)) {
            m_schedules = schedules;
            emit schedulesChanged(m_schedules);
        }
    } else if (command.name == wire::StoreBegin) {
        qint32 total = 0;
        if (vdstream::readAll(in, total)) {
            m_copying = true;
            m_total = total;
            m_received = 0;
            m_seen.clear();
            emit loading(0, m_total);
        }
    } else if (command.name == wire::StoreEnd) {
        finishCopy();
        return;
    }
    if (in.status() != QDataStream::Ok)
        qCWarning(lcServer) << "a broken" << command.name << "from the server, left alone";
}

void StoreMirror::takeObjects(const QString& dataname, const QList<ObjectInfo>& objects)
{
    vorandel::OBJECT_HASH& table = m_tables[dataname];
    QList<ObjectInfo> changed;
    for (const ObjectInfo& object : objects) {
        const auto held = table.constFind(object.uid);
        if (held == table.cend() || !(*held == object)) {
            table.insert(object.uid, object);
            changed.append(object);
        }
    }
    if (m_copying) {
        QSet<TYPE_ID>& seen = m_seen[dataname];
        for (const ObjectInfo& object : objects)
            seen.insert(object.uid);
        m_received += objects.size();
        emit loading(std::min(m_received, m_total), m_total);
    }
    // A dataname that comes empty is announced all the same: the store learns that it has one.
    if (!changed.isEmpty() || objects.isEmpty())
        emit objectsChanged(dataname, changed);
}

void StoreMirror::takeRemoved(const QString& dataname, const QList<TYPE_ID>& uids)
{
    vorandel::OBJECT_HASH& table = m_tables[dataname];
    QList<TYPE_ID> removed;
    for (TYPE_ID uid : uids) {
        if (table.remove(uid))
            removed.append(uid);
    }
    if (!removed.isEmpty())
        emit objectsRemoved(dataname, removed);
}

void StoreMirror::finishCopy()
{
    if (!m_copying)
        return;
    m_copying = false;
    // What the copy didn't bring is gone from the server, or from sight.
    for (auto& [dataname, table] : m_tables) {
        const QSet<TYPE_ID> seen = m_seen.value(dataname);
        QList<TYPE_ID> gone;
        for (auto it = table.cbegin(); it != table.cend(); ++it) {
            if (!seen.contains(it.key()))
                gone.append(it.key());
        }
        if (gone.isEmpty())
            continue;
        std::sort(gone.begin(), gone.end());
        takeRemoved(dataname, gone);
    }
    m_seen.clear();
    m_synced = true;
    emit synced();
}

}  // namespace vdserver
