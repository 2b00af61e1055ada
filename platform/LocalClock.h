#pragma once

#include <chrono>
#include <ctime>

/** The local time now, to the second. It jumps when the clock is set. Any thread. */
std::chrono::local_seconds LocalClockNow();

/** The local time in calendar fields, as the C library fills them. */
inline std::chrono::local_seconds LocalClockOf(const std::tm& fields) {
    using namespace std::chrono;
    return local_days(year(fields.tm_year + 1900) / month(static_cast<unsigned>(fields.tm_mon + 1)) /
                      day(static_cast<unsigned>(fields.tm_mday))) +
           hours(fields.tm_hour) + minutes(fields.tm_min) + seconds(fields.tm_sec);
}
