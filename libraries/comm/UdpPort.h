#pragma once

#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/NetPort.h"

#include <array>
#include <memory>

#include <boost/asio/ip/udp.hpp>

namespace comm {

/**
 * The sockets of one local pair, one for each IP version, created when a destination needs it. They stay
 * unconnected: a closed port at the other end is no error.
 */
class CUdpPort final : public CNetPort {
  public:
    CUdpPort(const SNetContext& context, const SNetPortConfig& record);

    SOpening BeginOpen(const SNetPortConfig& record) override;
    void Close() override;
    void Share() override;

  private:
    using Udp = boost::asio::ip::udp;

    EnError Deliver(const SNetPortConfig& record, std::string_view bytes) override;
    bool IsIdle() const override REQUIRES_LOCK(m_mutex) { return !m_sockets[0] && !m_sockets[1]; }

    /** Keeps the addresses that the local address can reach. IPv4 comes first, unless the local address is
     * IPv6. */
    [[nodiscard]] EnError Choose(Addresses& addresses) const;

    /** Sends to one address; the call has the turn. */
    [[nodiscard]] EnError SendToAddress(Lock& lock, const Udp::endpoint& destination, std::string_view bytes,
                                        Clock::time_point deadline) REQUIRES_LOCK(m_mutex);

    /** Binds the socket for destinations of one IP version. */
    [[nodiscard]] EnError Bind(bool v6) REQUIRES_LOCK(m_mutex);
    [[nodiscard]] EnError TryBind(Udp::socket& socket, bool v6) const REQUIRES_LOCK(m_mutex);
    [[nodiscard]] EnError SendTo(Lock& lock, const Udp::endpoint& destination, std::string_view bytes,
                                 Clock::time_point deadline) REQUIRES_LOCK(m_mutex);
    void Watch(bool v6) REQUIRES_LOCK(m_mutex);

    /** Reads and counts what has arrived; the tally passes it on. */
    void Drain(Udp::socket& socket);

    const SNetPortConfig m_record;
    std::array<std::unique_ptr<Udp::socket>, 2> m_sockets GUARDED_BY(m_mutex);  ///< IPv4, IPv6
    bool m_writable GUARDED_BY(m_mutex) = false;
    /** Ports of this library with other local addresses use the same local port number. */
    bool m_shared GUARDED_BY(m_mutex) = false;
};

}  // namespace comm
