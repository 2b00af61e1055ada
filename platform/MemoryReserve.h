#pragma once

/** Allocates the memory block that PrepareMemory describes, unless it exists. Any thread. */
void KeepMemoryReserve() noexcept;
