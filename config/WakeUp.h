#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

/** Lets one thread sleep until another wakes it. Any thread may wake. */
class CWakeUp {
  public:
    /** Ends the sleep, or the next one if the thread is awake. */
    void Wake() {
        {
            const std::lock_guard lock(m_mutex);
            m_isWoken = true;
        }
        m_condition.notify_one();
    }

    /** Sleeps until woken, but no longer than this. */
    void SleepFor(std::chrono::milliseconds time) {
        std::unique_lock lock(m_mutex);
        m_condition.wait_for(lock, time, [this] { return m_isWoken; });
        m_isWoken = false;
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_isWoken = false;
};
