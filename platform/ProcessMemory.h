#pragma once

#include <cstdint>

/** Memory in bytes that this process may count on: the machine's, or less where a limit is set for it. */
std::uint64_t MemoryOfMachine();

/** Bytes that the system would hand out at present, as far as it sets a bound; else a very large number. */
std::uint64_t MemoryLeft();

/**
 * Sets the allocator up for a server, and puts a block of memory by: when memory runs out for the first time,
 * the block is given up before std::bad_alloc is thrown, so that what cleans up afterwards has some. Once,
 * before the process has other threads or at least much work; later calls do nothing.
 */
void PrepareMemory();

/** Gives memory that is free inside the allocator back to the system, and puts the block by again. Takes up
 * to some milliseconds. Any thread. */
void ReturnFreeMemory() noexcept;
