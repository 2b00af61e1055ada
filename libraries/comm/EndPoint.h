#pragma once

#include "platform/PortRecords.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <boost/asio/ip/address.hpp>

namespace comm {

/**
 * The identity of a port of the library. Records of one TCP server, or of one UDP socket, differ only in
 * their remote pair, and share the port. A TCP client is identified by both pairs.
 */
struct SEndPointView {
    EnNetMode mode;
    std::string_view local;
    std::int32_t localPort;
    std::string_view remote;
    std::int32_t remotePort;

    bool operator==(const SEndPointView&) const = default;
};

/** The end points of a record; views its texts. */
SEndPointView EndPointOf(const SNetPortConfig& record);

/** An end point that owns its texts. */
struct SEndPoint {
    explicit SEndPoint(const SEndPointView& view);
    SEndPointView View() const { return {mode, local, localPort, remote, remotePort}; }

    EnNetMode mode;
    std::string local;
    std::int32_t localPort;
    std::string remote;
    std::int32_t remotePort;
};

/** Hash and equality for a map with look-ups by view, so that a look-up creates no text. */
struct SEndPointHash {
    using is_transparent = void;
    std::size_t operator()(const SEndPointView& view) const;
    std::size_t operator()(const SEndPoint& point) const { return (*this)(point.View()); }
};
struct SEndPointEqual {
    using is_transparent = void;
    static const SEndPointView& View(const SEndPointView& view) { return view; }
    static SEndPointView View(const SEndPoint& point) { return point.View(); }
    template <typename A, typename B>
    bool operator()(const A& a, const B& b) const {
        return View(a) == View(b);
    }
};

/** True for a local address that means all addresses: empty, 0.0.0.0 or ::. */
bool IsAnyAddress(std::string_view address);

/** True for a number that can be the port of a socket; 0 is valid only where it means "any". */
bool IsPort(std::int32_t port, bool orAny);

/** An address of a peer in the form that records use: IPv4 when it is IPv4 inside IPv6. */
boost::asio::ip::address Unmapped(const boost::asio::ip::address& address);

/** The address of the one device that the remote side of a record names; none when it is empty, any address
 * or a host name. */
std::optional<boost::asio::ip::address> NamedDevice(const std::string& remote);

/** An address and a port as text: "10.0.0.5:4001", "[fe80::1]:4001". */
std::string PairText(const boost::asio::ip::address& address, std::uint16_t port);

/** Name for the log, for example "TCP client 192.168.1.5:23". */
std::string Describe(const SNetPortConfig& record);

}  // namespace comm
