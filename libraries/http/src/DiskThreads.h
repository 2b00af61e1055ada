#pragma once

#include "libraries/http/src/EventThreads.h"
#include "libraries/http/src/ThreadSeats.h"
#include "platform/Mutex.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>

namespace hv::internal {

/**
 * Threads that wait for the disk instead of the event loops: they run tasks that open, read and send files.
 * They are few, so that a stalled disk occupies few, and independent of the handlers' places. Each thread is
 * started when there is first work for it.
 */
class DiskThreads {
  public:
    /** Sets the object that each thread keeps alive until it ends. Before the first task. */
    void SetOwner(std::weak_ptr<void> owner) { m_owner = std::move(owner); }

    /** Runs a task of that loop as soon as a thread is free. Any thread. */
    void Execute(EventThreads& home, const std::shared_ptr<BlockingTask>& task);

    /**
     * Ends the threads; abandons one that still waits for the disk a moment later. Waiting tasks stay. Not on
     * a thread of this object; once.
     * @return whether all threads ended
     */
    bool Join();

    /** Removes the waiting tasks; call it when no thread is running any more. */
    void Drop();

  private:
    void Main(ThreadSeats::Seat& seat);
    bool AddThread() REQUIRES_LOCK(m_mutex);

    std::weak_ptr<void> m_owner;
    CMutex m_mutex;
    std::condition_variable m_wake;
    std::deque<TaskLimit::Entry> m_waiting GUARDED_BY(m_mutex);
    std::size_t m_idle GUARDED_BY(m_mutex) = 0;
    bool m_over GUARDED_BY(m_mutex) = false;
    ThreadSeats m_seats GUARDED_BY(m_mutex);
};

}  // namespace hv::internal
