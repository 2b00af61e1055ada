#pragma once

#include "libraries/comm/CommSettings.h"
#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/PortLog.h"

#include <condition_variable>
#include <mutex>
#include <string>

namespace comm {

/**
 * What all ports share: a lock for the state, which is never held while a device is waited for, and a turn,
 * which one call keeps for as long as it takes, so that commands go out one after the other. Closing cuts
 * every wait.
 */
class CPort {
  public:
    virtual ~CPort() = default;
    CPort(const CPort&) = delete;
    CPort& operator=(const CPort&) = delete;

    /** Closes for good: calls under way and later ones end with ErrorCut. Any thread; does not wait. */
    virtual void Close() = 0;

  protected:
    using Lock = std::unique_lock<std::mutex>;

    explicit CPort(std::string name) : m_log(std::move(name)) {}

    /** The turn of one call, together with the lock. */
    class CTurn {
      public:
        /** Waits for the turn until the deadline. */
        CTurn(CPort& port, Clock::time_point deadline);
        ~CTurn();
        CTurn(const CTurn&) = delete;
        CTurn& operator=(const CTurn&) = delete;

        /** 0, ErrorTimedOut when the deadline came first, or ErrorCut. */
        int Error() const { return m_error; }
        Lock& GetLock() { return m_lock; }

      private:
        CPort& m_port;
        Lock m_lock;
        int m_error;
    };

    /** Waits until ready() holds, with the lock held whenever it is asked. @return as CTurn::Error */
    template <typename Ready>
    int WaitUntil(Lock& lock, Clock::time_point deadline, Ready ready) {
        const bool done = m_changed.wait_until(lock, deadline, [&] { return m_closed || ready(); });
        if (m_closed) {
            return ErrorCut;
        }
        return done ? ErrorNone : ErrorTimedOut;
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;  ///< told after each change of what a call may wait for
    bool m_busy = false;                ///< some call has the turn
    bool m_closed = false;
    CPortLog m_log;
};

}  // namespace comm
