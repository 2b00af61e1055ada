#pragma once

#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/TcpServer.h"

namespace comm {

/**
 * The delivery of one command to some devices of a TCP server, under the server's lock. It takes the turn of
 * each device when that is free, and keeps it until the device has got everything.
 */
class CTcpServer::CDelivery {
  public:
    CDelivery(CTcpServer& server, const std::set<std::uint64_t>& targets, std::string_view bytes);

    /** Disconnects the devices that have got only a part: nothing may follow it. */
    ~CDelivery();
    CDelivery(const CDelivery&) = delete;
    CDelivery& operator=(const CDelivery&) = delete;

    /** Writes until all devices have got everything, or are given up. @return 0 when one has, or an error */
    [[nodiscard]] EnError Run(Lock& lock, Clock::time_point deadline) REQUIRES_LOCK(m_server.m_mutex);

    /** The lock that is held is that of the server of this delivery. */
    void AssertLocked() const ASSERTS_LOCK(m_server.m_mutex) {}

  private:
    using Rests = std::map<std::uint64_t, std::string_view>;

    /** Goes on with each device that can take something. */
    void Advance() REQUIRES_LOCK(m_server.m_mutex);

    /** Goes on with one. @return true when there is nothing left to do for it */
    bool AdvanceTo(std::uint64_t id, SPeer& peer, std::string_view& rest) REQUIRES_LOCK(m_server.m_mutex);

    /** True when Advance has something to do. */
    bool IsReady() const REQUIRES_LOCK(m_server.m_mutex);

    /** Until when nothing happens without a word of a device: others may have the turn for too long. */
    Clock::time_point NextLook(Clock::time_point deadline) const REQUIRES_LOCK(m_server.m_mutex);
    void GiveUp() REQUIRES_LOCK(m_server.m_mutex);

    CTcpServer& m_server;
    Rests m_rests;  ///< what each device is still to get
    bool m_served = false;
    EnError m_lastError = ErrorNone;
};

}  // namespace comm
