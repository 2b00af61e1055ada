#pragma once

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

    int Open(const SNetPortConfig& record) override;
    int Send(const SNetPortConfig& record, std::string_view bytes) override;
    void Close() override;
    void Share() override;

  private:
    using Udp = boost::asio::ip::udp;

    bool IsIdle() const override { return !m_sockets[0] && !m_sockets[1]; }

    /** Leaves those that the local address can reach, IPv4 first unless that is an IPv6 address. */
    int Choose(Addresses& addresses) const;

    /** Sends to one address, in the turn of a call. */
    int SendToAddress(Lock& lock, const Udp::endpoint& destination, std::string_view bytes,
                      Clock::time_point deadline);

    /** Binds the socket for a destination of that version. */
    int Bind(bool v6);
    int TryBind(Udp::socket& socket, bool v6) const;
    int SendTo(Lock& lock, const Udp::endpoint& destination, std::string_view bytes,
               Clock::time_point deadline);
    void Watch(bool v6);

    /** Reads and drops what came in. */
    void Drain(Udp::socket& socket);

    const SNetPortConfig m_record;
    std::array<std::unique_ptr<Udp::socket>, 2> m_sockets;  ///< IPv4, IPv6
    bool m_writable = false;
    bool m_shared = false;  ///< ports of this library with other local addresses have the same local port
};

}  // namespace comm
