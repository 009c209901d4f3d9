#pragma once

#include <QtGlobal>

// The memory of this process as the kernel counts it (Linux).
class ProcessMemory
{
public:
    // Resident set now, in kB; -1 when it can't be read.
    static qint64 residentKb();
    // The highest resident set since the start or the last resetPeak(), in kB; -1 when unknown.
    static qint64 peakKb();
    // Lets the peak start again from the present resident set; false when the kernel refuses.
    static bool resetPeak();
    // Gives the heap's free pages back to the system, so that what comes next is counted in
    // full rather than filling holes left by earlier work.
    static void releaseFreeHeap();

private:
    ProcessMemory() = delete;
};
