#include "platform/LocalClock.h"

std::chrono::local_seconds LocalClockNow() {
    const std::time_t now = std::time(nullptr);
    std::tm fields{};
    localtime_r(&now, &fields);
    return LocalClockOf(fields);
}
