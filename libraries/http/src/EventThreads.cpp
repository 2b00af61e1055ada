#include "libraries/http/src/EventThreads.h"

#include "libraries/http/src/ErrorReport.h"
#include "libraries/http/src/Insist.h"

#include <exception>

#include <boost/asio/post.hpp>

namespace hv::internal {

namespace {

constexpr EventThreads::Time kTick{5};
constexpr int kQuietTicks = 20;
constexpr EventThreads::Time kEndOfIdleThreads{1000};

// Where the leader puts the task whose end it has to report, since it lost the loop while it was inside.
// Null on other threads.
thread_local std::shared_ptr<BlockingTask>* t_finishedLate = nullptr;

}  // namespace

EventThreads::EventThreads(TaskLimit& limit)
    : m_limit(limit), m_guard(boost::asio::make_work_guard(m_context)) {}

void EventThreads::Start(const std::shared_ptr<void>& owner) {
    const CLock lock(m_mutex);
    for (std::size_t i = 0; i <= m_limit.Places(); ++i) {
        m_seats.Start([this, owner, leads = i == 0](ThreadSeats::Seat& seat) { Main(seat, leads); });
    }
}

void EventThreads::Main(ThreadSeats::Seat& seat, bool leads) {
    if (leads) {
        Lead();
    }
    CUniqueLock lock(m_mutex);
    for (;;) {
        m_spareWake.wait(lock.Native(), [this]() REQUIRES_LOCK(m_mutex) { return m_over || !m_watched; });
        if (m_over) {
            break;
        }
        m_watched = true;
        const bool leadsNow = Watch(lock);
        m_watched = false;
        m_spareWake.notify_one();
        if (leadsNow) {
            lock.Unlock();
            Lead();
            lock.Lock();
        }
    }
    m_seats.TellEnd(seat);
}

void EventThreads::Lead() {
    std::shared_ptr<BlockingTask> finishedLate;
    t_finishedLate = &finishedLate;
    bool hasEnded = false;
    while (!finishedLate && !hasEnded) {
        try {
            hasEnded = m_context.run_one() == 0;
        } catch (const std::exception& error) {
            ReportError("On the event loop: ", error.what());
        } catch (...) {
            ReportError("On the event loop: ", "unknown exception");
        }
    }
    t_finishedLate = nullptr;
    if (hasEnded) {
        Finish();
    } else {
        RunOffLoop(std::move(finishedLate));
    }
}

bool EventThreads::Watch(CUniqueLock& lock) {
    std::uint64_t seen = m_turn.load();
    int quiet = 0;
    while (!m_over) {
        if (quiet < kQuietTicks) {
            m_watchWake.wait_for(lock.Native(), kTick);
        } else {
            m_watcherSleeps.store(true);
            m_watchWake.wait(lock.Native(),
                             [&] { return m_over || !m_watcherSleeps || m_turn.load() != seen; });
            m_watcherSleeps.store(false);
            quiet = 0;
        }
        const std::uint64_t now = m_turn.load();
        if (now != seen) {
            seen = now;
            quiet = 0;
        } else if ((now & 1) == 0) {
            ++quiet;
        } else if (m_turn.compare_exchange_strong(seen, now + 1)) {
            return true;
        }
    }
    return false;
}

void EventThreads::WakeWatcher() {
    {
        const CLock lock(m_mutex);
        m_watcherSleeps.store(false);
    }
    m_watchWake.notify_one();
}

void EventThreads::Execute(std::shared_ptr<BlockingTask> task) {
    if (m_limit.Enter(*this, task)) {
        RunOnLoop(std::move(task));
    }
}

void EventThreads::RunOnLoop(std::shared_ptr<BlockingTask> task) {
    const std::uint64_t turn = m_turn.load() + 2;
    m_turn.store(turn | 1);
    if (m_watcherSleeps.load()) {
        WakeWatcher();
    }
    ++m_inside;
    task->Run();
    --m_inside;
    std::uint64_t expected = turn | 1;
    if (!m_turn.compare_exchange_strong(expected, turn)) {
        *t_finishedLate = std::move(task);
        return;
    }
    if (auto next = m_limit.Leave()) {
        Insist([&] {
            boost::asio::post(next->home->m_context, [entry = *next] { entry.home->RunOnLoop(entry.task); });
        });
    }
    task->Done();
}

// A thread without the loop: reports the end of its task and runs waiting tasks of any loop. Its own event
// remains here, so that the loops are woken by what it posts.
void EventThreads::RunOffLoop(std::shared_ptr<BlockingTask> finished) {
    PostDone(finished);
    finished.reset();
    while (auto next = m_limit.Leave()) {
        ++m_inside;
        next->task->Run();
        --m_inside;
        next->home->PostDone(next->task);
    }
}

void EventThreads::PostDone(const std::shared_ptr<BlockingTask>& task) {
    Insist([&] { boost::asio::post(m_context, [task] { task->Done(); }); });
}

void EventThreads::Finish() {
    {
        const CLock lock(m_mutex);
        m_over = true;
    }
    m_context.stop();
    m_watchWake.notify_all();
    m_spareWake.notify_all();
}

bool EventThreads::Join(std::chrono::steady_clock::time_point deadline) {
    CUniqueLock lock(m_mutex);
    if (!m_seats.WaitForEnd(lock.Native(), deadline, [] { return 0U; })) {
        lock.Unlock();
        m_limit.Close();
        Finish();
        lock.Lock();
        m_seats.WaitForEnd(lock.Native(), std::chrono::steady_clock::now() + kEndOfIdleThreads,
                           [this] { return m_inside.load(); });
    }
    return m_seats.Join(lock.Native());
}

}  // namespace hv::internal
