#include "libraries/http/src/DiskThreads.h"

#include <chrono>
#include <system_error>

namespace hv::internal {

namespace {

constexpr std::size_t kThreads = 4;
constexpr std::chrono::milliseconds kEndOfThreads{500};

}  // namespace

void DiskThreads::Execute(EventThreads& home, const std::shared_ptr<BlockingTask>& task) {
    bool hasThread = false;
    {
        const CLock lock(m_mutex);
        hasThread = m_idle > m_waiting.size() || AddThread() || m_seats.Count() > 0;
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

// False when there are enough, or the system has none.
bool DiskThreads::AddThread() {
    if (m_seats.Count() == kThreads || m_over) {
        return false;
    }
    try {
        m_seats.Start([this, owner = m_owner.lock()](ThreadSeats::Seat& seat) { Main(seat); });
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

void DiskThreads::Main(ThreadSeats::Seat& seat) {
    CUniqueLock lock(m_mutex);
    for (;;) {
        ++m_idle;
        m_wake.wait(lock.Native(), [this]() REQUIRES_LOCK(m_mutex) { return m_over || !m_waiting.empty(); });
        --m_idle;
        if (m_over) {
            break;
        }
        TaskLimit::Entry entry = std::move(m_waiting.front());
        m_waiting.pop_front();
        lock.Unlock();
        entry.task->Run();
        entry.home->PostDone(entry.task);
        entry.task.reset();
        lock.Lock();
    }
    m_seats.TellEnd(seat);
}

bool DiskThreads::Join() {
    CUniqueLock lock(m_mutex);
    m_over = true;
    m_wake.notify_all();
    m_seats.WaitForEnd(lock.Native(), std::chrono::steady_clock::now() + kEndOfThreads, [] { return 0U; });
    return m_seats.Join(lock.Native());
}

void DiskThreads::Drop() {
    const CLock lock(m_mutex);
    m_waiting.clear();
}

}  // namespace hv::internal
