#pragma once

#include <algorithm>
#include <chrono>
#include <set>
#include <string>

/**
 * Limits the time that the sends of one thread may wait in vain, all together. Create one before a run of
 * sends; CComManager respects it as long as it lives. Failing sends use up the time; a successful one costs
 * nothing. When the time is used up, a ready device still gets its commands. Any other device has a quarter
 * of a second to get ready, until another half of the time has been spent on that too. From then on it fails
 * at once, with 10060 or, on a serial line that did not take an earlier command of this run, with 121. For
 * the thread that created it.
 */
class CVainWaits {
  public:
    using Duration = std::chrono::steady_clock::duration;

    explicit CVainWaits(Duration bound) : m_bound(bound), m_outer(Current()) { Current() = this; }
    ~CVainWaits() { Current() = m_outer; }
    CVainWaits(const CVainWaits&) = delete;
    CVainWaits& operator=(const CVainWaits&) = delete;

    /** The limit of the calling thread; null: none. */
    static CVainWaits* OfThread() { return Current(); }

    /** How long the next send may wait. @param least  the minimum when the limit is almost used up */
    Duration Left(Duration least) const {
        return m_spent < m_bound + m_bound / 2 ? std::max(m_bound - m_spent, least) : Duration::zero();
    }

    bool IsUsedUp() const { return m_spent >= m_bound; }

    /** Records that a send failed after this time. */
    void Add(Duration time) { m_spent += time; }

    /** Records that a serial line did not take a command. */
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
