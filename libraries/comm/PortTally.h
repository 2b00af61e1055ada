#pragma once

#include "libraries/comm/ErrorNumbers.h"
#include "platform/Histogram.h"
#include "platform/Mutex.h"
#include "platform/PortReports.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace comm {

/** Counts what one port does, and notes its state. Any thread; a command costs no lock. */
class CPortTally {
  public:
    /** Notes the state that the port has now. @param error  of EnPortState::Failed: why */
    void Become(EnPortState state, EnError error = ErrorNone);

    /** Notes a command that has been sent, or not, with its error number and the time that it took. */
    void CountCommand(std::size_t bytes, EnError error, std::chrono::steady_clock::duration time);

    /** Notes bytes that a device has sent. */
    void CountReceived(std::size_t bytes);

    /** All that is known here: everything but calls and peers. */
    SPortReport Report() const;

  private:
    using Time = SPortReport::Time;

    static Time Now() { return std::chrono::system_clock::now(); }
    void NoteError(EnError error) REQUIRES_LOCK(m_mutex);

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
