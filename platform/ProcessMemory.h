#pragma once

#include <cstdint>

/** Memory in bytes that this process may use: the machine's, or less where a limit is set. */
std::uint64_t MemoryOfMachine();

/**
 * Bytes that the system would still allocate at present, if it sets a bound; otherwise a very large number.
 */
std::uint64_t MemoryLeft();

/** Bytes of this process that are in memory at present; 0 when the system does not tell. */
std::uint64_t ResidentMemory();

/**
 * Configures the allocator for a server, and reserves a block of memory. When memory runs out for the first
 * time, the block is freed before std::bad_alloc is thrown, so that the clean-up afterwards has some memory.
 * Call it once, before the process has other threads or at least much work; later calls do nothing.
 */
void PrepareMemory();

/**
 * Returns memory that is free inside the allocator to the system, and reserves the block again. Takes up to
 * some milliseconds. Any thread.
 */
void ReturnFreeMemory() noexcept;
