#pragma once

#include <cstdint>

namespace hv::internal {

/**
 * The share of one request in the memory that all large requests of the process may use together, for its
 * body and for what is made from it. Returned at the end. One thread at a time; others may use theirs
 * meanwhile.
 */
class MemoryShare {
  public:
    MemoryShare() = default;
    ~MemoryShare() { Release(); }
    MemoryShare(const MemoryShare&) = delete;
    MemoryShare& operator=(const MemoryShare&) = delete;

    /** Whether this many more bytes are free at present, within the budget and in the system. */
    static bool IsFree(std::uint64_t bytes, std::uint64_t budget);

    /** Takes this many more bytes. @return false when they are not free; the share is unchanged then */
    bool Take(std::uint64_t bytes, std::uint64_t budget);

    /** Returns this many bytes. */
    void GiveBack(std::uint64_t bytes);

    void Release() { GiveBack(m_bytes); }

    std::uint64_t Bytes() const { return m_bytes; }

  private:
    std::uint64_t m_bytes = 0;
};

/** The default budget: a third of the machine's memory, but at most 8 GiB. */
std::uint64_t DefaultMemoryBudget();

}  // namespace hv::internal
