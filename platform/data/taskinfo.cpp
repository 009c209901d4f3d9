#include "taskinfo.h"

#include <QDebug>

namespace vorandel {

unsigned long long TaskInfo::_nextid = 0;

TaskInfo::TaskInfo() : id(++_nextid) {}

QDebug operator<<(QDebug debug, const TaskInfo& task)
{
    QDebugStateSaver saver(debug);
    debug.nospace() << "TaskInfo(" << task.id << ", " << task.type << ", uid " << task.uid << ", "
                    << task.subtasks.size() << " subtasks)";
    return debug;
}

}  // namespace vorandel
