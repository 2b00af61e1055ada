#pragma once

#include "libraries/http/src/TaskLimit.h"
#include "libraries/http/src/ThreadSeats.h"
#include "platform/Mutex.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>

#include <boost/asio/io_context.hpp>

namespace hv::internal {

/**
 * An event loop and the threads that serve it.
 *
 * Only one thread at a time, the leader, runs the loop. It also runs the handlers itself. So a request is
 * read, handled and answered without a change of thread and without a wake-up, which costs more than most
 * handlers do. Everything on the loop is therefore serial, and needs no locks.
 *
 * But a handler may block. So one spare thread watches. Every five milliseconds it checks whether the leader
 * is still inside the same handler as at the last check, and then takes over the loop. The old leader
 * continues with its handler and then joins the spare threads. When nothing has happened for a while, the
 * watching thread sleeps until the next handler begins.
 *
 * There is always one thread more than handlers may run at once, so the loop goes on even if all handlers are
 * stuck. Work beyond that number waits in a queue, together with that of the other loops which share the
 * limit (docs/decisions/0001-event-loop-runs-handlers.md).
 */
class EventThreads {
  public:
    using Time = std::chrono::milliseconds;

    /** @param limit  shared with other loops; outlives them */
    explicit EventThreads(TaskLimit& limit);

    boost::asio::io_context& Context() { return m_context; }

    /** Starts the threads. Each keeps the owner alive until it ends, even if it outlives a stop. */
    void Start(const std::shared_ptr<void>& owner);

    /** Runs a task, or queues it. On the loop only, as the last act of an event. */
    void Execute(std::shared_ptr<BlockingTask> task);

    /** Removes a task from the queue. @return the task; null when it has got a place */
    std::shared_ptr<BlockingTask> Withdraw(const BlockingTask* task) { return m_limit.Withdraw(task); }

    /** Reports the end of a task that another thread has run to the loop. Any thread. */
    void PostDone(const std::shared_ptr<BlockingTask>& task);

    /** Ends the loop: no event is served afterwards. Any thread. */
    void Finish();

    /**
     * Waits for Finish and the end of all threads, at most until the deadline. After that, closes the queue
     * of waiting tasks, ends the loop itself, and abandons threads that are stuck in a task. Not on a thread
     * of this object.
     * @return whether all threads ended
     */
    bool Join(std::chrono::steady_clock::time_point deadline);

  private:
    void Main(ThreadSeats::Seat& seat, bool leads);
    void Lead();
    bool Watch(CUniqueLock& lock) REQUIRES_LOCK(m_mutex);
    void WakeWatcher();
    void RunOnLoop(std::shared_ptr<BlockingTask> task);
    void RunOffLoop(std::shared_ptr<BlockingTask> finished);

    TaskLimit& m_limit;
    boost::asio::io_context m_context;
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> m_guard;

    // The lowest bit is set while the leader is inside a task; the rest counts tasks and changes of the
    // leader.
    std::atomic<std::uint64_t> m_turn{0};
    std::atomic<std::size_t> m_inside{0};  // threads inside a task
    std::atomic<bool> m_watcherSleeps{false};
    std::atomic<bool> m_over{false};

    CMutex m_mutex;
    std::condition_variable m_watchWake;  // the watching thread
    std::condition_variable m_spareWake;  // spare threads that don't watch
    bool m_watched GUARDED_BY(m_mutex) = false;
    ThreadSeats m_seats GUARDED_BY(m_mutex);
};

}  // namespace hv::internal
