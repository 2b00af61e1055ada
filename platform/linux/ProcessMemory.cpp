#include "platform/ProcessMemory.h"

#include "platform/MemoryReserve.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <string>

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();

std::uint64_t PageSize() {
    return static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

/** The limit of the process's control group (version 2); a service may have one. */
std::uint64_t LimitOfGroup() {
    std::ifstream groups("/proc/self/cgroup");
    for (std::string line; std::getline(groups, line);) {
        std::uint64_t limit = 0;
        if (line.rfind("0::", 0) == 0 &&
            std::ifstream("/sys/fs/cgroup" + line.substr(3) + "/memory.max") >> limit) {
            return limit;  // else it is "max"
        }
    }
    return kUnlimited;
}

}  // namespace

std::uint64_t MemoryOfMachine() {
    const auto all = static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) * PageSize();
    return std::min(all, LimitOfGroup());
}

std::uint64_t MemoryLeft() {
    rlimit limit{};
    std::uint64_t pages = 0;
    if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY ||
        !(std::ifstream("/proc/self/statm") >> pages)) {
        return kUnlimited;
    }
    return limit.rlim_cur - std::min<std::uint64_t>(pages * PageSize(), limit.rlim_cur);
}

std::uint64_t ResidentMemory() {
    std::uint64_t all = 0;
    std::uint64_t resident = 0;
    return std::ifstream("/proc/self/statm") >> all >> resident ? resident * PageSize() : 0;
}

void PrepareMemory() {
#ifdef __GLIBC__
    // Without these, the thresholds grow with the largest block that was ever freed, and smaller blocks stay
    // in the process.
    mallopt(M_MMAP_THRESHOLD, 256 * 1024);
    mallopt(M_TRIM_THRESHOLD, 1024 * 1024);
    mallopt(M_ARENA_MAX, 4);
#endif
    KeepMemoryReserve();
}

void ReturnFreeMemory() noexcept {
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    malloc_trim(0);  // a sanitizer brings an allocator of its own
#endif
    KeepMemoryReserve();
}
