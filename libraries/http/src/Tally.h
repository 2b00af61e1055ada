#pragma once

#include "platform/Mutex.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace hv::internal {

/**
 * Reports an event that clients can cause as often as they like: at most one line in the system log per
 * distance, with the number of events that got no line of their own. Any thread.
 */
class Tally {
  public:
    /** @param what  the event: the beginning of each line that has no text of its own */
    explicit Tally(std::string_view what, std::chrono::milliseconds distance = std::chrono::seconds(1))
        : m_what(what), m_distance(distance) {}

    /** Counts one event. @param example  details of this one */
    void Count(std::string_view example) noexcept;

    /** Counts one event. @param line  the whole line for this one */
    void CountLine(std::string_view line) noexcept;

    /** Writes the pending line, if there is one and it is time; or at once. */
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
