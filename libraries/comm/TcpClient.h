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

    EnError Deliver(const SNetPortConfig& record, std::string_view bytes) override;
    EnError AwaitOpen(const SOpening& opening) override;
    bool IsIdle() const override REQUIRES_LOCK(m_mutex) {
        return m_link == nullptr && !m_attempting && !m_silent;
    }

    /** Begins an attempt unless one is under way. @return its number */
    std::uint64_t JoinAttempt() REQUIRES_LOCK(m_mutex);

    /** Waits for the end of an attempt. */
    [[nodiscard]] EnError WaitForAttempt(Lock& lock, std::uint64_t attempt, Clock::time_point deadline)
        REQUIRES_LOCK(m_mutex);

    /** As WaitForAttempt, after it has begun one, for a send that has the turn. */
    [[nodiscard]] EnError ConnectForSend(Lock& lock, Clock::time_point deadline) REQUIRES_LOCK(m_mutex);

    /** Writes all bytes. @param taken  after a failure: whether the system has taken some of them */
    [[nodiscard]] EnError Write(Lock& lock, std::string_view bytes, Clock::time_point deadline, bool& taken)
        REQUIRES_LOCK(m_mutex);

    /** The error number of a send that makes no attempt, since the device is silent or failed a moment ago;
     * 0: none. */
    EnError KnownFailure() const REQUIRES_LOCK(m_mutex);

    // The steps of an attempt (TcpConnect.cpp). They follow each other on threads of the library, under the
    // lock.
    void Attempt(bool isProbe) REQUIRES_LOCK(m_mutex);
    void Resolve() REQUIRES_LOCK(m_mutex);
    void OnResolved(const SResolved& resolved) REQUIRES_LOCK(m_mutex);
    void TryNext() REQUIRES_LOCK(m_mutex);
    void OnConnected(EnError error) REQUIRES_LOCK(m_mutex);
    [[nodiscard]] EnError OpenSocket(const Endpoint& device) REQUIRES_LOCK(m_mutex);
    void Finish(EnError error) REQUIRES_LOCK(m_mutex);

    /** Makes a handler for the present step. It is called under the lock, and not at all once the step is
     * over. */
    template <typename Handler>
    auto InStep(Handler handler) REQUIRES_LOCK(m_mutex);

    /** Runs a step. An exception ends the attempt. */
    template <typename Step>
    void Guard(Step step) REQUIRES_LOCK(m_mutex);

    void SetSilent(bool silent) REQUIRES_LOCK(m_mutex);
    void ProbeLater() REQUIRES_LOCK(m_mutex);

    void Watch() REQUIRES_LOCK(m_mutex);
    void OnReadable() REQUIRES_LOCK(m_mutex);

    /** Looks whether the device has ended the connection, and forgets the connection if so. */
    CTcpLink::EnPeer Look() REQUIRES_LOCK(m_mutex);

    /** As Look, for a call: waits while the news goes to the handler under way first. @return as LookUntil */
    [[nodiscard]] EnError LookAndWait(Lock& lock, Clock::time_point deadline) REQUIRES_LOCK(m_mutex);

    /** Forgets a connection that the device ended or the network broke. */
    void Lose(EnError error, bool ended) REQUIRES_LOCK(m_mutex);

    /** Closes the connection from this side. */
    void Drop() REQUIRES_LOCK(m_mutex);

    const SNetPortConfig m_record;
    std::unique_ptr<CTcpLink> m_link GUARDED_BY(m_mutex);  ///< null when not connected and not connecting
    /** Number of the link. A handler with another number belongs to an earlier link. */
    std::uint64_t m_generation GUARDED_BY(m_mutex) = 0;
    bool m_connected GUARDED_BY(m_mutex) = false;
    bool m_writable GUARDED_BY(m_mutex) = false;
    bool m_used GUARDED_BY(m_mutex) = false;  ///< a command went out on this connection
    EnError m_lostError GUARDED_BY(m_mutex) = ErrorReset;
    Clock::time_point m_connectedAt GUARDED_BY(m_mutex);
    int m_shortLived GUARDED_BY(m_mutex) = 0;  ///< connections in a row that ended before they were of use
    EnError m_failure GUARDED_BY(m_mutex) =
        ErrorNone;  ///< error number of the last attempt, 0 when it succeeded
    Clock::time_point m_failedAt GUARDED_BY(m_mutex);

    bool m_attempting GUARDED_BY(m_mutex) = false;
    bool m_isProbe GUARDED_BY(m_mutex) = false;        ///< nobody asked for the attempt under way
    bool m_isForSend GUARDED_BY(m_mutex) = false;      ///< a send waits for it, or waited
    bool m_wasSilent GUARDED_BY(m_mutex) = false;      ///< an address of the device did not answer
    std::uint64_t m_attempts GUARDED_BY(m_mutex) = 0;  ///< attempts that have begun
    std::uint64_t m_finished GUARDED_BY(m_mutex) = 0;  ///< attempts that have ended
    /** Number of the step. A handler with another number belongs to an earlier step. */
    std::uint64_t m_step GUARDED_BY(m_mutex) = 0;
    Clock::time_point m_attemptAt GUARDED_BY(m_mutex);
    std::vector<boost::asio::ip::address> m_untried GUARDED_BY(m_mutex);  ///< in reverse order
    EnError m_attemptError GUARDED_BY(m_mutex) = ErrorNone;
    boost::asio::steady_timer m_timer
        GUARDED_BY(m_mutex);  ///< limit of the step, or the pause before the next probe

    bool m_silent GUARDED_BY(m_mutex) = false;
    Clock::duration m_probePause GUARDED_BY(m_mutex){};
    Clock::time_point m_lastSend GUARDED_BY(m_mutex);
};

}  // namespace comm
