#pragma once

#include <algorithm>
#include <chrono>
#include <set>
#include <string>

/**
 * Bounds what the sends of one thread may wait in vain together: make one before a run of sends, and
 * CComManager keeps to it for as long as it lives. Sends that fail use the time up; one that succeeds costs
 * nothing. When it is used up, a device that is ready still gets its commands, any other a quarter of a
 * second to get ready, until half the time again has gone for that too; from then on it fails at once, with
 * 10060 or, on a serial line that did not take an earlier command of this run, 121. For the thread that made
 * it.
 */
class CVainWaits {
  public:
    using Duration = std::chrono::steady_clock::duration;

    explicit CVainWaits(Duration bound) : m_bound(bound), m_outer(Current()) { Current() = this; }
    ~CVainWaits() { Current() = m_outer; }
    CVainWaits(const CVainWaits&) = delete;
    CVainWaits& operator=(const CVainWaits&) = delete;

    /** What the thread that asks has to keep to; null: nothing. */
    static CVainWaits* OfThread() { return Current(); }

    /** How long the next send may wait. @param least  what it gets when the bound is almost used up */
    Duration Left(Duration least) const {
        return m_spent < m_bound + m_bound / 2 ? std::max(m_bound - m_spent, least) : Duration::zero();
    }

    bool IsUsedUp() const { return m_spent >= m_bound; }

    /** A send failed after that time. */
    void Add(Duration time) { m_spent += time; }

    /** A serial line did not take a command. */
    void NoteStuckLine(const std::string& port) { m_stuckLines.insert(port); }
    bool IsStuckLine(const std::string& port) const { return m_stuckLines.contains(port); }

  private:
    static CVainWaits*& Current() {
        thread_local CVainWaits* current = nullptr;
        return current;
    }

    const Duration m_bound;
    Duration m_spent{0};
    std::set<std::string> m_stuckLines;
    CVainWaits* const m_outer;
};
