#pragma once

#include "platform/Mutex.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace hv::internal {

/**
 * Reports something that clients can bring about as often as they like: one line in the system log for each
 * distance at most, with the number of those that got no line of their own. Any thread.
 */
class Tally {
  public:
    /** @param what  what happened, the beginning of each line that has no text of its own */
    explicit Tally(std::string_view what, std::chrono::milliseconds distance = std::chrono::seconds(1))
        : m_what(what), m_distance(distance) {}

    /** It has happened. @param example  this time's details */
    void Count(std::string_view example) noexcept;

    /** The same. @param line  the whole line for this time */
    void CountLine(std::string_view line) noexcept;

    /** Writes the line that is owed, if any, and when it is time; or at once. */
    void Tell(bool atOnce) noexcept;

  private:
    using Clock = std::chrono::steady_clock;

    bool MayTell();

    const std::string m_what;
    const std::chrono::milliseconds m_distance;
    CMutex m_mutex;
    std::size_t m_untold GUARDED_BY(m_mutex) = 0;
    Clock::time_point m_next GUARDED_BY(m_mutex);
};

}  // namespace hv::internal
