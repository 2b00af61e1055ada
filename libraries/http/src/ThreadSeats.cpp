#include "libraries/http/src/ThreadSeats.h"

namespace hv::internal {

ThreadSeats::~ThreadSeats() {
    for (auto& seat : m_seats) {
        if (seat->thread.joinable()) {
            seat->thread.detach();
        }
    }
}

void ThreadSeats::TellEnd(Seat& seat) {
    seat.ended = true;
    --m_alive;
    m_endedWake.notify_all();
}

bool ThreadSeats::Join(std::unique_lock<std::mutex>& lock) {
    const bool all = m_alive == 0;
    for (auto& seat : m_seats) {
        const bool ended = seat->ended;
        lock.unlock();
        ended ? seat->thread.join() : seat->thread.detach();
        lock.lock();
    }
    return all;
}

}  // namespace hv::internal
