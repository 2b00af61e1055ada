#pragma once

#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/NetPort.h"
#include "libraries/comm/TcpLink.h"

#include <cstdint>
#include <memory>

#include <boost/asio/steady_timer.hpp>

namespace comm {

/**
 * A connection to one device, made when it is needed, and again after the device ended it.
 *
 * Connections are made on the library's thread, one attempt at a time. Some calls wait for an attempt, others
 * don't. A device that let a send wait in vain is silent. From then on sends fail at once, and the device is
 * tried now and then in the background until it answers.
 */
class CTcpClient final : public CNetPort {
  public:
    CTcpClient(const SNetContext& context, const SNetPortConfig& record);

    SOpening BeginOpen(const SNetPortConfig& record) override;
    void Close() override;

  private:
    using Endpoint = boost::asio::ip::tcp::endpoint;

    EnError AwaitOpen(const SOpening& opening) override;
    EnError SendBytes(const SNetPortConfig& record, std::string_view bytes) override;
    bool IsIdle() const override REQUIRES_LOCK(m_mutex) {
        return m_link == nullptr && !m_attempting && !m_silent;
    }

    /** Begins an attempt unless one is under way. @return its number */
    std::uint64_t JoinAttempt() REQUIRES_LOCK(m_mutex);

    /** Waits for the end of an attempt. */
    [[nodiscard]] EnError WaitForAttempt(Lock& lock, std::uint64_t attempt, Clock::time_point deadline)
        REQUIRES_LOCK(m_mutex);

    /** The same for a send, which has the turn. */
    [[nodiscard]] EnError ConnectForSend(Lock& lock, Clock::time_point deadline) REQUIRES_LOCK(m_mutex);

    /** Writes all bytes. @param taken whether the system took some of them, when it failed */
    [[nodiscard]] EnError Write(Lock& lock, std::string_view bytes, Clock::time_point deadline, bool& taken)
        REQUIRES_LOCK(m_mutex);

    /** The code that a send returns without an attempt: the device is silent, or failed a moment ago. */
    EnError KnownFailure() const REQUIRES_LOCK(m_mutex);
    /** The same for a send that has just come, which needs no turn to learn it. */
    EnError FailAtOnce();

    // An attempt, see TcpConnect.cpp. Its steps follow each other on threads of the library, under the lock.
    void Attempt(bool isProbe) REQUIRES_LOCK(m_mutex);
    void Resolve() REQUIRES_LOCK(m_mutex);
    void OnResolved(const SResolved& resolved) REQUIRES_LOCK(m_mutex);
    void TryNext() REQUIRES_LOCK(m_mutex);
    void OnConnected(EnError error) REQUIRES_LOCK(m_mutex);
    [[nodiscard]] EnError OpenSocket(const Endpoint& device) REQUIRES_LOCK(m_mutex);
    void Finish(EnError error) REQUIRES_LOCK(m_mutex);

    /** Gives a handler of the present step: it is called under the lock, unless the step is over by then. */
    template <typename Handler>
    auto InStep(Handler handler) REQUIRES_LOCK(m_mutex);

    /** Runs a step; one that throws ends the attempt. */
    template <typename Step>
    void Guard(Step step) REQUIRES_LOCK(m_mutex);

    void SetSilent(bool silent) REQUIRES_LOCK(m_mutex);
    void ProbeLater() REQUIRES_LOCK(m_mutex);

    void Watch() REQUIRES_LOCK(m_mutex);
    void OnReadable() REQUIRES_LOCK(m_mutex);

    /** Looks whether the device ended the connection, which is forgotten then. */
    CTcpLink::EnPeer Look() REQUIRES_LOCK(m_mutex);

    /** The same for a call, which waits for the news where the handler under way has them. @return as
     * LookUntil */
    [[nodiscard]] EnError LookAndWait(Lock& lock, Clock::time_point deadline) REQUIRES_LOCK(m_mutex);

    /** Forgets the connection, which the device ended or the network broke. */
    void Lose(EnError error, bool ended) REQUIRES_LOCK(m_mutex);

    /** Closes the connection from here. */
    void Drop() REQUIRES_LOCK(m_mutex);

    const SNetPortConfig m_record;
    std::unique_ptr<CTcpLink> m_link GUARDED_BY(m_mutex);  ///< null when not connected and not connecting
    /** Tells handlers of an earlier link from those of this one. */
    std::uint64_t m_generation GUARDED_BY(m_mutex) = 0;
    bool m_connected GUARDED_BY(m_mutex) = false;
    bool m_writable GUARDED_BY(m_mutex) = false;
    bool m_used GUARDED_BY(m_mutex) = false;  ///< a command went out on this connection
    EnError m_lostError GUARDED_BY(m_mutex) = ErrorReset;
    Clock::time_point m_connectedAt GUARDED_BY(m_mutex);
    int m_shortLived GUARDED_BY(m_mutex) = 0;           ///< connections in a row that were good for nothing
    EnError m_failure GUARDED_BY(m_mutex) = ErrorNone;  ///< code of the last attempt, 0 after a good one
    Clock::time_point m_failedAt GUARDED_BY(m_mutex);

    bool m_attempting GUARDED_BY(m_mutex) = false;
    bool m_isProbe GUARDED_BY(m_mutex) = false;        ///< nobody asked for the attempt under way
    bool m_isForSend GUARDED_BY(m_mutex) = false;      ///< a send waits for it, or waited
    bool m_wasSilent GUARDED_BY(m_mutex) = false;      ///< an address of it did not answer
    std::uint64_t m_attempts GUARDED_BY(m_mutex) = 0;  ///< attempts that have begun
    std::uint64_t m_finished GUARDED_BY(m_mutex) = 0;  ///< attempts that have ended
    /** Tells handlers of an earlier step from those of this one. */
    std::uint64_t m_step GUARDED_BY(m_mutex) = 0;
    Clock::time_point m_attemptAt GUARDED_BY(m_mutex);
    std::vector<boost::asio::ip::address> m_untried GUARDED_BY(m_mutex);  ///< in reverse order
    EnError m_attemptError GUARDED_BY(m_mutex) = ErrorNone;
    boost::asio::steady_timer m_timer GUARDED_BY(m_mutex);  ///< of the step, or until the next probe

    bool m_silent GUARDED_BY(m_mutex) = false;
    Clock::duration m_probePause GUARDED_BY(m_mutex){};
    Clock::time_point m_lastSend GUARDED_BY(m_mutex);
};

}  // namespace comm
