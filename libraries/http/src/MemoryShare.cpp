#include "libraries/http/src/MemoryShare.h"

#include "platform/ProcessMemory.h"

#include <algorithm>
#include <atomic>

namespace hv::internal {

namespace {

constexpr std::uint64_t kLargestBudget = std::uint64_t{8} << 30;
constexpr std::uint64_t kLeftToOthers = std::uint64_t{32} << 20;  // of what the system would hand out

std::atomic<std::uint64_t> g_taken = 0;

}  // namespace

bool MemoryShare::IsFree(std::uint64_t bytes, std::uint64_t budget) {
    const std::uint64_t taken = g_taken;
    if (taken > budget || bytes > budget - taken) {
        return false;
    }
    const std::uint64_t left = MemoryLeft();
    return left > kLeftToOthers && bytes <= left - kLeftToOthers;
}

bool MemoryShare::Take(std::uint64_t bytes, std::uint64_t budget) {
    if (!IsFree(bytes, budget)) {
        return false;
    }
    if (g_taken.fetch_add(bytes) > budget - bytes) {
        g_taken -= bytes;
        return false;  // another was faster
    }
    m_bytes += bytes;
    return true;
}

void MemoryShare::GiveBack(std::uint64_t bytes) {
    bytes = std::min(bytes, m_bytes);
    m_bytes -= bytes;
    g_taken -= bytes;
}

std::uint64_t DefaultMemoryBudget() {
    return std::min(MemoryOfMachine() / 3, kLargestBudget);
}

}  // namespace hv::internal
