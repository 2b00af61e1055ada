#pragma once

#include "platform/Mutex.h"

#include <chrono>
#include <condition_variable>

/** Lets one thread sleep until another wakes it. Any thread may wake. */
class CWakeUp {
  public:
    /** Ends the sleep, or the next one if the thread is awake. */
    void Wake() {
        {
            const CLock lock(m_mutex);
            m_isWoken = true;
        }
        m_condition.notify_one();
    }

    /** Sleeps until woken, but no longer than this. */
    void SleepFor(std::chrono::milliseconds time) {
        CUniqueLock lock(m_mutex);
        m_condition.wait_for(lock.Native(), time, [this]() REQUIRES_LOCK(m_mutex) { return m_isWoken; });
        m_isWoken = false;
    }

  private:
    CMutex m_mutex;
    std::condition_variable m_condition;
    bool m_isWoken GUARDED_BY(m_mutex) = false;
};
