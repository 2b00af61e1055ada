#include "libraries/comm/EndPoint.h"

#include "platform/PortListener.h"

#include <functional>

#include <boost/asio/ip/address_v4.hpp>
#include <boost/asio/ip/address_v6.hpp>

bool IsDeviceOf(const SNetPortConfig& record, std::string_view address) {
    if (record.netMode == NetModeTcpClient) {
        return true;
    }
    const auto named = comm::NamedDevice(record.dstIpAddress);
    const auto host = [](std::string_view pair) { return pair.substr(0, pair.rfind(':')); };
    return !named || host(comm::PairText(*named, 0)) == host(address);
}

namespace comm {

SEndPointView EndPointOf(const SNetPortConfig& record) {
    SEndPointView view{record.netMode, record.ipAddress, record.port, {}, 0};
    if (IsAnyAddress(view.local)) {
        view.local = {};
    }
    if (record.netMode == NetModeTcpClient) {
        view.remote = record.dstIpAddress;
        view.remotePort = record.dstPort;
    }
    return view;
}

SEndPoint::SEndPoint(const SEndPointView& view)
    : mode(view.mode),
      local(view.local),
      localPort(view.localPort),
      remote(view.remote),
      remotePort(view.remotePort) {}

std::size_t SEndPointHash::operator()(const SEndPointView& view) const {
    const std::hash<std::string_view> text;
    const auto ports = static_cast<std::uint64_t>(static_cast<std::uint32_t>(view.localPort)) << 32U |
                       static_cast<std::uint32_t>(view.remotePort);
    std::size_t hash = text(view.remote) * 31 + text(view.local);
    hash = hash * 31 + std::hash<std::uint64_t>()(ports);
    return hash * 31 + static_cast<std::size_t>(view.mode);
}

bool IsAnyAddress(std::string_view address) {
    return address.empty() || address == "0.0.0.0" || address == "::";
}

bool IsPort(std::int32_t port, bool orAny) {
    return port >= (orAny ? 0 : 1) && port <= 65535;
}

boost::asio::ip::address Unmapped(const boost::asio::ip::address& address) {
    if (address.is_v6() && address.to_v6().is_v4_mapped()) {
        return boost::asio::ip::make_address_v4(boost::asio::ip::v4_mapped, address.to_v6());
    }
    return address;
}

std::optional<boost::asio::ip::address> NamedDevice(const std::string& remote) {
    boost::system::error_code notLiteral;
    const auto literal = boost::asio::ip::make_address(remote, notLiteral);
    return notLiteral || IsAnyAddress(remote) ? std::nullopt : std::optional(literal);
}

std::string PairText(const boost::asio::ip::address& address, std::uint16_t port) {
    const auto from = Unmapped(address);
    const std::string text = from.is_v6() ? '[' + from.to_string() + ']' : from.to_string();
    return text + ':' + std::to_string(port);
}

std::string Describe(const SNetPortConfig& record) {
    const auto pair = [](const std::string& address, std::int32_t port) {
        return (address.empty() ? "*" : address) + ':' + std::to_string(port);
    };
    switch (record.netMode) {
        case NetModeTcpClient:
            return "TCP client " + pair(record.dstIpAddress, record.dstPort);
        case NetModeTcpServer:
            return "TCP server " + pair(record.ipAddress, record.port);
        case NetModeUdp:
            break;
    }
    return "UDP " + pair(record.ipAddress, record.port);
}

}  // namespace comm
