#pragma once

#include "libraries/comm/CommSettings.h"
#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/PortLog.h"
#include "libraries/comm/PortTally.h"
#include "platform/Mutex.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <string>
#include <utility>

namespace comm {

/** A port that one call is using. The registry keeps a port as long as another call is using it. */
template <typename Port>
class CPortInHand {
  public:
    /** Under the registry's lock. @param port  may be null */
    explicit CPortInHand(std::shared_ptr<Port> port) : m_port(std::move(port)) { Count(1); }
    ~CPortInHand() { Count(-1); }
    CPortInHand(CPortInHand&& other) noexcept : m_port(std::exchange(other.m_port, nullptr)) {}
    CPortInHand(const CPortInHand&) = delete;
    CPortInHand& operator=(const CPortInHand&) = delete;

    explicit operator bool() const { return m_port != nullptr; }
    Port* operator->() const { return m_port.get(); }
    bool Is(const std::shared_ptr<Port>& port) const { return m_port == port; }

  private:
    void Count(int change) {
        if (m_port) {
            m_port->CountCalls(change);
        }
    }

    std::shared_ptr<Port> m_port;
};

/**
 * The common part of all ports: a lock for the state, which is never held while waiting for a device, and a
 * turn, which one call keeps as long as it takes, so that commands go out one after the other. Closing ends
 * every wait.
 */
class CPort {
  public:
    virtual ~CPort() = default;
    CPort(const CPort&) = delete;
    CPort& operator=(const CPort&) = delete;

    /**
     * Closes the port permanently: calls under way and later ones end with ErrorCut. Any thread; does not
     * wait.
     */
    virtual void Close() = 0;

    /** Counts a call that begins or ends to use the port. @return number of calls that use it now */
    int CountCalls(int change) { return m_calls += change; }

    /** What the port has done, without its peers. Any thread; does not wait. */
    SPortReport Report() const;

  protected:
    using Lock = CUniqueLock;

    explicit CPort(std::string name) : m_log(std::move(name)) {}

    /** The turn of one call. It begins and ends under the lock. */
    class CTurn {
      public:
        /** Waits for the turn until the deadline, or until the patience with the call that has it ends
         * (SetPatience). */
        CTurn(CPort& port, Lock& lock, Clock::time_point deadline) REQUIRES_LOCK(port.m_mutex);
        ~CTurn();
        CTurn(const CTurn&) = delete;
        CTurn& operator=(const CTurn&) = delete;

        /** 0, ErrorTimedOut when the turn was not free in time, or ErrorCut. */
        EnError Error() const { return m_error; }

      private:
        CPort& m_port;
        Lock& m_lock;
        EnError m_error;
    };

    /** Waits until ready() is true. It is called with the lock held. @return as CTurn::Error */
    template <typename Ready>
    [[nodiscard]] EnError WaitUntil(Lock& lock, Clock::time_point deadline, Ready ready)
        REQUIRES_LOCK(m_mutex) {
        const bool done = m_changed.wait_until(lock.Native(), deadline,
                                               [&]() REQUIRES_LOCK(m_mutex) { return m_closed || ready(); });
        if (m_closed) {
            return ErrorCut;
        }
        return done ? ErrorNone : ErrorTimedOut;
    }

    /** Sets how long other calls wait for the call that has the turn. Its device may be stuck. */
    void SetPatience(Clock::time_point until) REQUIRES_LOCK(m_mutex);

    CMutex m_mutex;
    std::condition_variable m_changed;        ///< notified after each change for which a call may wait
    bool m_busy GUARDED_BY(m_mutex) = false;  ///< some call has the turn
    bool m_closed GUARDED_BY(m_mutex) = false;
    CPortLog m_log GUARDED_BY(m_mutex);
    CPortTally m_tally;

  private:
    std::atomic<int> m_calls = 0;

    [[nodiscard]] EnError WaitForTurn(Lock& lock, Clock::time_point deadline) REQUIRES_LOCK(m_mutex);
    void AssertLocked() const ASSERTS_LOCK(m_mutex) {}

    Clock::time_point m_patience GUARDED_BY(m_mutex) = Clock::time_point::max();  ///< see SetPatience
};

}  // namespace comm
