#pragma once

#include <atomic>
#include <cstdint>

/**
 * Bytes that the traffic of all interfaces together may take in memory: "traffic_bytes" of LocalHost.config;
 * 0: none is kept. Set before the server starts. Any thread.
 */
inline std::atomic<std::int32_t>& TrafficLimit() {
    static std::atomic<std::int32_t> bytes = 32 * 1024 * 1024;
    return bytes;
}
