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
 * Threads that are abandoned at the end if they are stuck. This is the last member of the object in which
 * they run and which they keep alive. All functions except the destructor are called under that object's
 * mutex.
 */
class ThreadSeats {
  public:
    struct Seat {
        std::thread thread;
        bool ended = false;
    };

    ThreadSeats() = default;

    /** Detaches the threads that nobody has waited for. */
    ~ThreadSeats();
    ThreadSeats(const ThreadSeats&) = delete;
    ThreadSeats& operator=(const ThreadSeats&) = delete;

    /**
     * Starts a thread.
     * @param main  gets the thread's seat, and reports its end
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

    /** Reports that the thread of the seat is about to end. */
    void TellEnd(Seat& seat);

    /** Number of started threads. */
    std::size_t Count() const { return m_seats.size(); }

    /** Waits until at most this many threads run. @return false when the deadline passed before */
    template <typename Most>
    bool WaitForEnd(std::unique_lock<std::mutex>& lock, std::chrono::steady_clock::time_point deadline,
                    Most most) {
        return m_endedWake.wait_until(lock, deadline, [&] { return m_alive <= most(); });
    }

    /**
     * Waits for the threads that have reported their end, and abandons the others; no thread can be started
     * afterwards. @return whether all had reported it
     */
    bool Join(std::unique_lock<std::mutex>& lock);

  private:
    std::condition_variable m_endedWake;
    std::size_t m_alive = 0;
    std::vector<std::unique_ptr<Seat>> m_seats;
};

}  // namespace hv::internal
