#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace hv::internal {

/**
 * Threads that are left to themselves at the end when they are stuck. The last member of the object they run
 * in, which they hold on to; all but the end is called under that object's mutex.
 */
class ThreadSeats {
  public:
    struct Seat {
        std::thread thread;
        bool ended = false;
    };

    ThreadSeats() = default;

    /** Lets the threads go that nobody has waited for. */
    ~ThreadSeats();
    ThreadSeats(const ThreadSeats&) = delete;
    ThreadSeats& operator=(const ThreadSeats&) = delete;

    /**
     * Starts a thread.
     * @param main  is given the thread's seat, and tells its end
     * @throw std::system_error when the system has no thread
     */
    template <typename Main>
    void Start(Main main) {
        m_seats.push_back(std::make_unique<Seat>());
        Seat& seat = *m_seats.back();
        try {
            seat.thread = std::thread([main = std::move(main), &seat] { main(seat); });
        } catch (...) {
            m_seats.pop_back();
            throw;
        }
        ++m_alive;
    }

    /** The thread of the seat is about to end. */
    void TellEnd(Seat& seat);

    /** How many were started. */
    std::size_t Count() const { return m_seats.size(); }

    /** Waits until no more threads run than that. @return false when the time was over before */
    template <typename Most>
    bool WaitForEnd(std::unique_lock<std::mutex>& lock, std::chrono::steady_clock::time_point deadline,
                    Most most) {
        return m_endedWake.wait_until(lock, deadline, [&] { return m_alive <= most(); });
    }

    /** Waits for the threads that told their end and leaves the others to themselves; none is started any
     * more. @return whether all had told it */
    bool Join(std::unique_lock<std::mutex>& lock);

  private:
    std::condition_variable m_endedWake;
    std::size_t m_alive = 0;
    std::vector<std::unique_ptr<Seat>> m_seats;
};

}  // namespace hv::internal
