#pragma once

#include <atomic>
#include <chrono>
#include <thread>

namespace hv::internal {

/**
 * Has memory given back to the system after a load: a while after the last large request or reply has ended,
 * once, on a thread of its own, so that no request waits for it.
 */
class Housekeeper {
  public:
    Housekeeper() = default;
    ~Housekeeper();
    Housekeeper(const Housekeeper&) = delete;
    Housekeeper& operator=(const Housekeeper&) = delete;

    /** Something large has ended. Any thread. */
    void Note();

    /** Whether there is something to be done later. Any thread. */
    bool IsDue() const { return m_due; }

    /** Does it when it is time. To be called now and then; any thread. */
    void Look() noexcept;

  private:
    using Clock = std::chrono::steady_clock;

    std::atomic<bool> m_due = false;
    std::atomic<bool> m_busy = false;  // the thread works, or is being started
    std::atomic<Clock::rep> m_last = 0;
    std::thread m_thread;  // touched by who has set m_busy
};

}  // namespace hv::internal
