#pragma once

#include <functional>
#include <utility>
#include <vector>

/**
 * Opens ports side by side: make one before a run of CComManager::InitNetSocket. While it lives, a call that
 * would wait for a device only begins, and gives true; the end of its life waits until all are open or have
 * failed, for as long as the slowest. For the thread that made it. With a library that doesn't look for it
 * each call waits as usual.
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

    /** What the thread that asks has to leave its waiting to; null: nothing. */
    static CPortsTogether* OfThread() { return Current(); }

    /** Of the library: leaves something to the end. @param wait  is called once, and does not throw */
    void Leave(std::function<void()> wait) { m_waits.push_back(std::move(wait)); }

  private:
    static CPortsTogether*& Current() {
        thread_local CPortsTogether* current = nullptr;
        return current;
    }

    std::vector<std::function<void()>> m_waits;
    CPortsTogether* const m_outer;
};
