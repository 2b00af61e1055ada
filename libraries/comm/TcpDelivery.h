#pragma once

#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/TcpServer.h"

namespace comm {

/**
 * Delivers one command to some devices of a TCP server, under the server's lock. It takes the turn of each
 * device as soon as the turn is free, and keeps it until the device has received everything.
 */
class CTcpServer::CDelivery {
  public:
    CDelivery(CTcpServer& server, const std::set<std::uint64_t>& targets, std::string_view bytes);

    /** Disconnects the devices that have received only a part: nothing may follow a part. */
    ~CDelivery();
    CDelivery(const CDelivery&) = delete;
    CDelivery& operator=(const CDelivery&) = delete;

    /** Writes until each device has received everything or is given up. @return 0 when one has received it,
     * or an error */
    [[nodiscard]] EnError Run(Lock& lock, Clock::time_point deadline) REQUIRES_LOCK(m_server.m_mutex);

    /** For the lock check: the lock that is held is that of the server of this delivery. */
    void AssertLocked() const ASSERTS_LOCK(m_server.m_mutex) {}

  private:
    using Rests = std::map<std::uint64_t, std::string_view>;

    /** Continues with each device that can take more. */
    void Advance() REQUIRES_LOCK(m_server.m_mutex);

    /** Continues with one device. @return true when nothing is left to do for it */
    bool AdvanceTo(std::uint64_t id, SPeer& peer, std::string_view& rest) REQUIRES_LOCK(m_server.m_mutex);

    /** True when Advance has something to do. */
    bool IsReady() const REQUIRES_LOCK(m_server.m_mutex);

    /** When to look again if no device reports anything: another command may keep a turn for too long. */
    Clock::time_point NextLook(Clock::time_point deadline) const REQUIRES_LOCK(m_server.m_mutex);
    void GiveUp() REQUIRES_LOCK(m_server.m_mutex);

    CTcpServer& m_server;
    Rests m_rests;  ///< what each device has not received yet
    bool m_served = false;
    EnError m_lastError = ErrorNone;
};

}  // namespace comm
