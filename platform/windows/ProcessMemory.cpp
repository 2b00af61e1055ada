#include "platform/ProcessMemory.h"

#include "platform/MemoryReserve.h"

#include <limits>

#include <malloc.h>
#include <windows.h>

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

void PrepareMemory() {
    KeepMemoryReserve();
}

void ReturnFreeMemory() noexcept {
    _heapmin();
    KeepMemoryReserve();
}
