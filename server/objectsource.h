#pragma once

#include "objectinfo.h"
#include "servicerecords.h"
#include "vdhash.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

namespace vdserver {

// Where a console's store takes its copy of the server's objects from: the server itself when it
// is embedded, or its mirror on the other side of the network.
class ObjectSource : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    // Emits objectsChanged for every dataname (an empty list for an empty one), then
    // settingsChanged and schedulesChanged, synchronously: a store is filled from it.
    virtual void publish() = 0;

signals:
    void objectsChanged(const QString& dataname, const QList<vorandel::ObjectInfo>& objects);
    void objectsRemoved(const QString& dataname, const QList<vorandel::TYPE_ID>& uids);
    void settingsChanged(const QHash<QString, QString>& settings);
    void schedulesChanged(const VDHash<int, vorandel::SCHEDULE_DATA>& schedules);
};

}  // namespace vdserver
