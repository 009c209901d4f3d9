#pragma once

#include "objectinfo.h"
#include "vdplatform_export.h"

#include <QList>
#include <QMetaType>
#include <QMultiMap>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

namespace vorandel {

// One step of work for a tab's task queue: what to do, with what, and whom to tell.
struct VDPLATFORM_EXPORT TaskInfo
{
    // Every default construction takes the next number; copies keep theirs.
    TaskInfo();
    TaskInfo(const TaskInfo&) = default;
    TaskInfo& operator=(const TaskInfo&) = default;

    unsigned long long id;
    QList<unsigned long long> depends;  // tasks without which this one is pointless
    TYPE_ID uid = 0;                    // the object concerned; 0 for one yet to be made
    QString type;
    QMultiMap<QString, QVariant> params;
    QString message;       // for the operator on success
    QString errorMessage;  // for the operator on failure
    QList<TaskInfo> subtasks;  // run before the task itself, in order
    QPointer<QObject> receiver;
    QString slot;  // slot of `receiver`, by name, without signature

    static unsigned long long _nextid;
};

VDPLATFORM_EXPORT QDebug operator<<(QDebug debug, const TaskInfo& task);

}  // namespace vorandel

Q_DECLARE_METATYPE(vorandel::TaskInfo)
