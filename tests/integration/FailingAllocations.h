#pragma once

#include <array>
#include <atomic>
#include <cstdint>

/**
 * What a test tells the preloaded allocator (fail_allocation_linux.cpp), in a file that both have mapped.
 */
struct SFailingAllocations {
    std::atomic<std::int64_t> left;        ///< allocations until the first failing one
    std::atomic<std::int64_t> count;       ///< how many fail in a row; 0: none
    std::atomic<std::int64_t> reached;     ///< 1 once the first was reached
    std::atomic<std::int64_t> leftAtMain;  ///< the value that `left` takes when main begins

    /** Begins and ends of functions in libServer.so whose allocations are passed over, up to a zero. */
    std::array<std::array<std::int64_t, 2>, 32> spared;
};
