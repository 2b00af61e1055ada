#pragma once

#include <cstdint>

namespace hv::internal {

/**
 * What one request has of the memory that all large requests of the process may take together, for its body
 * and for what is made of it. Given back at the end. One thread at a time; others may have theirs meanwhile.
 */
class MemoryShare {
  public:
    MemoryShare() = default;
    ~MemoryShare() { Release(); }
    MemoryShare(const MemoryShare&) = delete;
    MemoryShare& operator=(const MemoryShare&) = delete;

    /** Whether so many bytes more are free at present, within the budget and in the system. */
    static bool IsFree(std::uint64_t bytes, std::uint64_t budget);

    /** Takes so many bytes more. @return false when they are not free; the share is as it was then */
    bool Take(std::uint64_t bytes, std::uint64_t budget);

    /** Gives so many bytes back. */
    void GiveBack(std::uint64_t bytes);

    void Release() { GiveBack(m_bytes); }

    std::uint64_t Bytes() const { return m_bytes; }

  private:
    std::uint64_t m_bytes = 0;
};

/** The budget where none is set: a third of the machine's memory, and 8 GiB at most. */
std::uint64_t DefaultMemoryBudget();

}  // namespace hv::internal
