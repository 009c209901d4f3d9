#pragma once

#include <QString>

namespace vdserver::wire {

// The commands of a connection to a standalone server, beside those of the services. Each is a
// query that gets its answer; the "store.*" pushes come unasked.

// Login: login (QString), password (QString), the session id to resume after a reconnection
// (QByteArray, empty for a new one). Answer: user uid (quint32), login (QString), full name
// (QString), rights (QStringList), session id (QByteArray); or a failure with its text.
inline const QString Login = QStringLiteral("session.login");
// Nothing but a sign of life, both ways; a connection that says nothing for long is dropped.
inline const QString Ping = QStringLiteral("exchange.ping");
// The copy of the server's objects that the user may see: pushed whole, between StoreBegin and
// StoreEnd, and then every committed change. Answered after StoreEnd.
inline const QString Snapshot = QStringLiteral("store.snapshot");

// Pushes. StoreBegin: how many objects follow (qint32); then the settings and schedules.
inline const QString StoreBegin = QStringLiteral("store.begin");
// dataname (QString), objects (QList<ObjectInfo>)
inline const QString StoreObjects = QStringLiteral("store.objects");
// dataname (QString), uids (QList<TYPE_ID>)
inline const QString StoreRemoved = QStringLiteral("store.removed");
// QHash<QString, QString>
inline const QString StoreSettings = QStringLiteral("store.settings");
// QHash<int, SCHEDULE_DATA>
inline const QString StoreSchedules = QStringLiteral("store.schedules");
// The whole copy has been pushed: what the receiver holds beyond it is gone from the server.
inline const QString StoreEnd = QStringLiteral("store.end");

}  // namespace vdserver::wire
