#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include <boost/asio/io_context.hpp>

namespace hv::internal {

/** A piece of work that may block: a call of somebody else's code. */
class BlockingTask {
  public:
    virtual ~BlockingTask() = default;

    /** The part that may block. Any of the threads; nothing else touches the task meanwhile. */
    virtual void Run() noexcept = 0;

    /** What follows, on the event loop. */
    virtual void Done() = 0;
};

/**
 * An event loop and the threads that serve it.
 *
 * Only one thread at a time, the leader, runs the loop. It also runs the handlers itself, so that a request
 * is read, handled and answered without a change of thread and without a wake-up, which costs more than most
 * handlers do. Everything that runs on the loop is therefore serial, and needs no locks.
 *
 * A handler may block, though. So one spare thread watches: it looks every five milliseconds whether the
 * leader is still inside the same handler as at the look before, and then takes the loop over. The old leader
 * goes on with its handler and queues behind the others afterwards. When nothing has happened for a while the
 * watching thread sleeps until the next handler begins.
 *
 * There is always one thread more than handlers may run at once, so the loop goes on with all of them stuck.
 * Work beyond that number waits in the order of its arrival.
 */
class EventThreads {
  public:
    using Time = std::chrono::milliseconds;

    /** @param tasks  tasks that run at once at most; at least 1 */
    explicit EventThreads(std::size_t tasks);
    ~EventThreads();
    EventThreads(const EventThreads&) = delete;
    EventThreads& operator=(const EventThreads&) = delete;

    boost::asio::io_context& Context() { return m_context; }

    /** Starts the threads. Each holds on to the owner until it ends, also one that outlives a stop. */
    void Start(const std::shared_ptr<void>& owner);

    /** Runs a task, or queues it. On the loop only, as the last act of an event. */
    void Execute(std::shared_ptr<BlockingTask> task);

    /** Ends the loop: no event is served and no waiting task begun from now on. Any thread. */
    void Finish();

    /**
     * Waits for Finish and the end of all threads, at most for the time of grace; after that ends the loop by
     * itself and leaves threads that are stuck in a task to themselves. Not on a thread of this object.
     * @return whether all threads ended
     */
    bool Join(Time grace);

  private:
    struct Seat {
        std::thread thread;
        bool ended = false;
    };

    void Main(Seat& seat, bool leads);
    void Lead();
    bool Watch(std::unique_lock<std::mutex>& lock);
    void WakeWatcher();
    void WorkOff(std::shared_ptr<BlockingTask> finished);
    std::shared_ptr<BlockingTask> TakeWaiting();
    void PostDone(std::shared_ptr<BlockingTask> task);

    const std::size_t m_tasks;
    boost::asio::io_context m_context;
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> m_guard;

    // The lowest bit is set while the leader is inside a task; the rest counts tasks and changes of the
    // leader.
    std::atomic<std::uint64_t> m_turn{0};
    std::atomic<std::size_t> m_running{0};
    std::atomic<bool> m_watcherSleeps{false};
    std::atomic<bool> m_over{false};

    std::mutex m_mutex;
    std::condition_variable m_watchWake;  // the watching thread
    std::condition_variable m_spareWake;  // spare threads that don't watch
    std::condition_variable m_endedWake;  // Join
    bool m_watched = false;
    std::size_t m_alive = 0;
    std::deque<std::shared_ptr<BlockingTask>> m_waiting;
    std::vector<std::unique_ptr<Seat>> m_seats;
};

}  // namespace hv::internal
