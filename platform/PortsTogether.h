#pragma once

#include <functional>
#include <utility>
#include <vector>

/**
 * Opens ports side by side. Make one before a run of calls of CComManager::InitNetSocket. While it lives, a
 * call that would wait for a device only begins, and returns true. The destructor waits until all are open or
 * have failed, so that the run takes as long as the slowest port. It works for the thread that made it. With
 * a library that ignores it, each call waits as usual.
 */
class CPortsTogether {
  public:
    CPortsTogether() : m_outer(std::exchange(Current(), this)) {}
    ~CPortsTogether() {
        Current() = m_outer;
        for (auto& wait : m_waits) {
            std::exchange(wait, nullptr)();
        }
    }
    CPortsTogether(const CPortsTogether&) = delete;
    CPortsTogether& operator=(const CPortsTogether&) = delete;

    /** The one to which the calling thread leaves its waits; null: none. */
    static CPortsTogether* OfThread() { return Current(); }

    /** For the library: leaves a wait to the destructor. @param wait  called once; must not throw */
    void Leave(std::function<void()> wait) { m_waits.push_back(std::move(wait)); }

  private:
    static CPortsTogether*& Current() {
        thread_local CPortsTogether* current = nullptr;
        return current;
    }

    std::vector<std::function<void()>> m_waits;
    CPortsTogether* const m_outer;
};
