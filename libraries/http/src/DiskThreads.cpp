#include "libraries/http/src/DiskThreads.h"

#include <chrono>
#include <system_error>

namespace hv::internal {

namespace {

constexpr std::size_t g_threads = 4;
constexpr std::chrono::milliseconds g_endOfThreads{500};

}  // namespace

DiskThreads::~DiskThreads() {
    for (auto& seat : m_seats) {
        if (seat->thread.joinable()) {
            seat->thread.detach();
        }
    }
}

void DiskThreads::Execute(EventThreads& home, const std::shared_ptr<BlockingTask>& task) {
    bool hasThread = false;
    {
        const std::lock_guard lock(m_mutex);
        hasThread = m_idle > m_waiting.size() || AddThread() || !m_seats.empty();
        if (hasThread) {
            m_waiting.push_back({&home, task});
        }
    }
    if (hasThread) {
        m_wake.notify_one();
    } else {
        task->Run();  // the system has no thread
        home.PostDone(task);
    }
}

// Under the lock. False when there are enough, or the system has none.
bool DiskThreads::AddThread() {
    if (m_seats.size() == g_threads || m_over) {
        return false;
    }
    m_seats.reserve(g_threads);
    auto made = std::make_unique<Seat>();
    try {
        made->thread = std::thread([this, owner = m_owner.lock(), &seat = *made] { Main(seat); });
    } catch (const std::system_error&) {
        return false;
    }
    m_seats.push_back(std::move(made));
    ++m_alive;
    return true;
}

void DiskThreads::Main(Seat& seat) {
    std::unique_lock lock(m_mutex);
    for (;;) {
        ++m_idle;
        m_wake.wait(lock, [this] { return m_over || !m_waiting.empty(); });
        --m_idle;
        if (m_over) {
            break;
        }
        TaskLimit::Entry entry = std::move(m_waiting.front());
        m_waiting.pop_front();
        lock.unlock();
        entry.task->Run();
        entry.home->PostDone(entry.task);
        entry.task.reset();
        lock.lock();
    }
    seat.ended = true;
    --m_alive;
    m_endedWake.notify_all();
}

bool DiskThreads::Join() {
    std::unique_lock lock(m_mutex);
    m_over = true;
    m_wake.notify_all();
    m_endedWake.wait_for(lock, g_endOfThreads, [this] { return m_alive == 0; });
    const bool all = m_alive == 0;
    for (auto& seat : m_seats) {
        const bool ended = seat->ended;
        lock.unlock();
        ended ? seat->thread.join() : seat->thread.detach();
        lock.lock();
    }
    return all;
}

void DiskThreads::Drop() {
    const std::lock_guard lock(m_mutex);
    m_waiting.clear();
}

}  // namespace hv::internal
