#pragma once

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

    int Open(const SNetPortConfig& record) override;
    int Send(const SNetPortConfig& record, std::string_view bytes) override;
    void Close() override;

  private:
    using Endpoint = boost::asio::ip::tcp::endpoint;

    bool IsIdle() const override { return m_link == nullptr && !m_attempting && !m_silent; }

    /** Waits for the attempt under way, or for a new one. */
    int WaitForAttempt(Lock& lock, Clock::time_point deadline);

    /** The same for a send, which has the turn. */
    int ConnectForSend(Lock& lock, Clock::time_point deadline);

    /** Writes all bytes. @param taken whether the system took some of them, when it failed */
    int Write(Lock& lock, std::string_view bytes, Clock::time_point deadline, bool& taken);

    /** The code that a send returns without an attempt: the device is silent, or failed a moment ago. */
    int KnownFailure() const;
    /** The same for a send that has just come, which needs no turn to learn it. */
    int FailAtOnce();

    // An attempt, see TcpConnect.cpp. Its steps follow each other on threads of the library, under the lock.
    void Attempt(bool isProbe);
    void Resolve();
    void OnResolved(const SResolved& resolved);
    void TryNext();
    void OnConnected(int error);
    int OpenSocket(const Endpoint& device);
    void Finish(int error);

    /** Gives a handler of the present step: it is called under the lock, unless the step is over by then. */
    template <typename Handler>
    auto InStep(Handler handler);

    /** Runs a step; one that throws ends the attempt. */
    template <typename Step>
    void Guard(Step step);

    void SetSilent(bool silent);
    void ProbeLater();

    void Watch();
    void OnReadable();

    /** Looks whether the device ended the connection, which is forgotten then. */
    CTcpLink::EnPeer Look();

    /** The same for a call, which waits for the news where the handler under way has them. @return as
     * LookUntil */
    int LookAndWait(Lock& lock, Clock::time_point deadline);

    /** Forgets the connection, which the device ended or the network broke. */
    void Lose(int error, bool ended);

    /** Closes the connection from here. */
    void Drop();

    const SNetPortConfig m_record;
    std::unique_ptr<CTcpLink> m_link;  ///< null when not connected and not connecting
    std::uint64_t m_generation = 0;    ///< tells handlers of an earlier link from those of this one
    bool m_connected = false;
    bool m_writable = false;
    bool m_used = false;  ///< a command went out on this connection
    int m_lostError = ErrorReset;
    Clock::time_point m_connectedAt;
    int m_shortLived = 0;  ///< connections in a row that were good for nothing
    int m_failure = 0;     ///< code of the last attempt, 0 after a good one
    Clock::time_point m_failedAt;

    bool m_attempting = false;
    bool m_isProbe = false;        ///< nobody asked for the attempt under way
    bool m_isForSend = false;      ///< a send waits for it, or waited
    bool m_wasSilent = false;      ///< an address of it did not answer
    std::uint64_t m_attempts = 0;  ///< attempts that have begun
    std::uint64_t m_finished = 0;  ///< attempts that have ended
    std::uint64_t m_step = 0;      ///< tells handlers of an earlier step from those of this one
    Clock::time_point m_attemptAt;
    std::vector<boost::asio::ip::address> m_untried;  ///< in reverse order
    int m_attemptError = 0;
    boost::asio::steady_timer m_timer;  ///< of the step, or until the next probe

    bool m_silent = false;
    Clock::duration m_probePause{};
    Clock::time_point m_lastSend;
};

}  // namespace comm
