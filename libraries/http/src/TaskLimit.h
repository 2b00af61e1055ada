#pragma once

#include "platform/Mutex.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>

namespace hv::internal {

class EventThreads;

/** A piece of work that may block: a call of somebody else's code. */
class BlockingTask {
  public:
    virtual ~BlockingTask() = default;

    /** It has to wait for a place. On the event loop, before any other thread can see it. */
    virtual void Waits() {}

    /** The part that may block. Any of the threads; nothing else touches the task meanwhile. */
    virtual void Run() noexcept = 0;

    /** What follows, on the event loop. */
    virtual void Done() = 0;
};

/**
 * How many tasks may run at once on all event loops of a server, and the line of those that wait for a place,
 * in the order of their arrival. While one waits no place is free: it goes from hand to hand. Any thread.
 */
class TaskLimit {
  public:
    /** A task and the event loop that it belongs to. */
    struct Entry {
        EventThreads* home;
        std::shared_ptr<BlockingTask> task;
    };

    /** @param places  tasks that run at once at most; at least 1 */
    explicit TaskLimit(std::size_t places);

    std::size_t Places() const { return m_places; }

    /** Takes a place, or puts the task into the line. @return whether the task has got a place */
    bool Enter(EventThreads& home, const std::shared_ptr<BlockingTask>& task);

    /** Gives a place back. @return the task that has it now, which the caller sees to */
    std::optional<Entry> Leave();

    /** Takes a task out of the line. @return the task; null when it is not there (any more) */
    std::shared_ptr<BlockingTask> Withdraw(const BlockingTask* task);

    /** From now on no waiting task gets a place. */
    void Close();

    /** Forgets the tasks that wait; when no loop is running any more. */
    void Drop();

  private:
    const std::size_t m_places;
    CMutex m_mutex;
    std::size_t m_taken GUARDED_BY(m_mutex) = 0;
    bool m_closed GUARDED_BY(m_mutex) = false;
    std::deque<Entry> m_waiting GUARDED_BY(m_mutex);
};

}  // namespace hv::internal
