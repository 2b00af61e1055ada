#pragma once

#include "platform/Mutex.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>

namespace hv::internal {

class EventThreads;

/** Work that may block: a call of somebody else's code. */
class BlockingTask {
  public:
    virtual ~BlockingTask() = default;

    /** Called when it has to wait for a place. On the event loop, before any other thread can see it. */
    virtual void Waits() {}

    /** The part that may block. Any of the threads; nothing else touches the task meanwhile. */
    virtual void Run() noexcept = 0;

    /** The rest of the work, on the event loop. */
    virtual void Done() = 0;
};

/**
 * The limit of tasks that run at once on all event loops of a server, and the queue of those that wait for a
 * place, in the order of their arrival. While a task waits, no place is free: a place is passed on directly.
 * Any thread.
 */
class TaskLimit {
  public:
    /** A task and the event loop that it belongs to. */
    struct Entry {
        EventThreads* home;
        std::shared_ptr<BlockingTask> task;
    };

    /** @param places  maximum of tasks that run at once; at least 1 */
    explicit TaskLimit(std::size_t places);

    std::size_t Places() const { return m_places; }

    /** Takes a place, or queues the task. @return whether the task has got a place */
    bool Enter(EventThreads& home, const std::shared_ptr<BlockingTask>& task);

    /** Returns a place. @return the task that gets it, which the caller has to run */
    std::optional<Entry> Leave();

    /** Removes a task from the queue. @return the task; null when it is not there (any more) */
    std::shared_ptr<BlockingTask> Withdraw(const BlockingTask* task);

    /** From now on, gives no place to a waiting task. */
    void Close();

    /** Removes the waiting tasks; call it when no loop is running any more. */
    void Drop();

  private:
    const std::size_t m_places;
    CMutex m_mutex;
    std::size_t m_taken GUARDED_BY(m_mutex) = 0;
    bool m_closed GUARDED_BY(m_mutex) = false;
    std::deque<Entry> m_waiting GUARDED_BY(m_mutex);
};

}  // namespace hv::internal
