#pragma once

#include "libraries/comm/ErrorNumbers.h"
#include "platform/Histogram.h"
#include "platform/Mutex.h"
#include "platform/PortListener.h"
#include "platform/PortReports.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace comm {

/**
 * Counts what one port does, notes its state, and tells both to who listens to the ports. Any thread; a
 * command costs no lock.
 */
class CPortTally {
  public:
    CPortTally();
    ~CPortTally();
    CPortTally(const CPortTally&) = delete;
    CPortTally& operator=(const CPortTally&) = delete;

    /** Notes the state that the port has now. @param error  of EnPortState::Failed: why */
    void Become(EnPortState state, EnError error = ErrorNone);

    /** Notes a command that has been sent, or not, with its error number and the time that it took. */
    void CountCommand(std::size_t bytes, EnError error, std::chrono::steady_clock::duration time);

    /** Tells a listener of such a command. */
    void TellCommand(std::string_view bytes, EnError error) const;

    /** Notes bytes that a device has sent. @param peer  called when somebody listens: gives the SPortPeer */
    template <typename Peer>
    void CountReceived(std::string_view bytes, Peer peer) {
        if (bytes.empty()) {
            return;
        }
        m_bytesIn += bytes.size();
        m_lastIn = Now();
        if (CPortListener* const listener = Listener(); listener != nullptr) {
            listener->OnReceived(m_port, peer(), bytes);
        }
    }

    /** All that is known here: everything but calls and peers. */
    SPortReport Report() const;

  private:
    using Time = SPortReport::Time;

    /** Who listens to the ports; null: nobody. */
    static CPortListener* Listener();
    static Time Now() { return std::chrono::system_clock::now(); }
    void NoteError(EnError error) REQUIRES_LOCK(m_mutex);

    const std::uint64_t m_port;
    mutable CMutex m_mutex;  ///< of what changes rarely
    EnPortState m_state GUARDED_BY(m_mutex) = EnPortState::Closed;
    Time m_since GUARDED_BY(m_mutex);
    EnError m_lastError GUARDED_BY(m_mutex) = ErrorNone;
    Time m_lastErrorAt GUARDED_BY(m_mutex);
    std::atomic<std::uint64_t> m_bytesOut = 0;
    std::atomic<std::uint64_t> m_bytesIn = 0;
    std::atomic<std::uint64_t> m_commandsOut = 0;
    std::atomic<std::uint64_t> m_commandsFailed = 0;
    CHistogram m_sendTimes;
    std::atomic<Time> m_lastOut;
    std::atomic<Time> m_lastIn;
};

}  // namespace comm
