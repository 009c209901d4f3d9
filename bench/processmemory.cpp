#include "processmemory.h"

#include <QByteArray>
#include <QFile>

#include <malloc.h>

namespace {

// A "Name:   1234 kB" line of /proc/self/status, in kB.
qint64 statusKb(const QByteArray& name)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray prefix = name + ':';
    const QList<QByteArray> lines = status.readAll().split('\n');
    for (const QByteArray& line : lines) {
        if (!line.startsWith(prefix))
            continue;
        const QList<QByteArray> fields = line.mid(prefix.size()).simplified().split(' ');
        bool ok = false;
        const qint64 kb = fields.value(0).toLongLong(&ok);
        return ok ? kb : -1;
    }
    return -1;
}

}  // namespace

qint64 ProcessMemory::residentKb()
{
    return statusKb("VmRSS");
}

qint64 ProcessMemory::peakKb()
{
    return statusKb("VmHWM");
}

bool ProcessMemory::resetPeak()
{
    // Writing 5 to clear_refs sets the peak to the present resident set (Linux 4.0 and later).
    QFile clearRefs(QStringLiteral("/proc/self/clear_refs"));
    return clearRefs.open(QIODevice::WriteOnly) && clearRefs.write("5") == 1;
}

void ProcessMemory::releaseFreeHeap()
{
    malloc_trim(0);
}
