#pragma once

#include <atomic>
#include <chrono>
#include <thread>

namespace hv::internal {

/**
 * Returns memory to the system after a load: once, a while after the last large request or reply has ended,
 * on a thread of its own, so that no request waits for it.
 */
class Housekeeper {
  public:
    Housekeeper() = default;
    ~Housekeeper();
    Housekeeper(const Housekeeper&) = delete;
    Housekeeper& operator=(const Housekeeper&) = delete;

    /** Records that a large request or reply has ended. Any thread. */
    void Note();

    /** Whether there is something to do later. Any thread. */
    bool IsDue() const { return m_due; }

    /** Returns the memory if it is time. Call it now and then; any thread. */
    void Look() noexcept;

  private:
    using Clock = std::chrono::steady_clock;

    std::atomic<bool> m_due = false;
    std::atomic<bool> m_busy = false;  // the thread works, or is being started
    std::atomic<Clock::rep> m_last = 0;
    std::thread m_thread;  // touched by who has set m_busy
};

}  // namespace hv::internal
