#pragma once

#include "libraries/http/src/EventThreads.h"
#include "libraries/http/src/ThreadSeats.h"
#include "platform/Mutex.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>

namespace hv::internal {

/**
 * Threads that wait for the disk in the place of the event loops: they run tasks that open, read and send
 * files. They are few, so that a disk that stands still takes few, and have nothing to do with the handlers'
 * places. Each is started when there is first work for it.
 */
class DiskThreads {
  public:
    /** What each thread holds on to until it ends. Before the first task. */
    void SetOwner(std::weak_ptr<void> owner) { m_owner = std::move(owner); }

    /** Runs a task of that loop as soon as a thread is free. Any thread. */
    void Execute(EventThreads& home, const std::shared_ptr<BlockingTask>& task);

    /**
     * Ends the threads; one that still waits for the disk a moment later is left to itself. Tasks that wait
     * stay. Not on a thread of this object; once.
     * @return whether all threads ended
     */
    bool Join();

    /** Forgets the tasks that wait; when no thread is running any more. */
    void Drop();

  private:
    void Main(ThreadSeats::Seat& seat);
    bool AddThread();

    std::weak_ptr<void> m_owner;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<TaskLimit::Entry> m_waiting;
    std::size_t m_idle = 0;
    bool m_over = false;
    ThreadSeats m_seats;
};

}  // namespace hv::internal
