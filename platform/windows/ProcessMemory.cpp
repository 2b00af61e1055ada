#include "platform/ProcessMemory.h"

#include "platform/MemoryReserve.h"

#include <limits>

#include <malloc.h>
#include <windows.h>
// After windows.h, which it needs.
#include <psapi.h>

namespace {

MEMORYSTATUSEX Status() {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    if (GlobalMemoryStatusEx(&status) == FALSE) {
        status.ullTotalPhys = status.ullAvailPageFile = std::numeric_limits<std::uint64_t>::max();
    }
    return status;
}

}  // namespace

std::uint64_t MemoryOfMachine() {
    return Status().ullTotalPhys;
}

std::uint64_t MemoryLeft() {
    return Status().ullAvailPageFile;
}

std::uint64_t ResidentMemory() {
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof counters;
    return K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, counters.cb) == FALSE
               ? 0
               : counters.WorkingSetSize;
}

void PrepareMemory() {
    KeepMemoryReserve();
}

void ReturnFreeMemory() noexcept {
    _heapmin();
    KeepMemoryReserve();
}
