#pragma once

/** Puts the block by that PrepareMemory tells of, unless it is there. Any thread. */
void KeepMemoryReserve() noexcept;
