#include "libraries/comm/UdpPort.h"

#include "libraries/comm/EndPoint.h"

#include <algorithm>
#include <functional>

#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/multicast.hpp>
#include <boost/asio/ip/v6_only.hpp>

namespace comm {

namespace {

/** What fits into one datagram over IPv4: 65,535 bytes without the two headers (RFC 791, RFC 768). */
constexpr std::size_t kLongestDatagram = 65507;

constexpr int kDatagramsAtOnce = 64;

/** Tells senders apart from each other, and from TCP connections, whose numbers begin at 1. */
std::uint64_t NumberOf(const boost::asio::ip::udp::endpoint& sender) {
    constexpr std::uint64_t kSender = std::uint64_t{1} << 63U;
    const auto address = Unmapped(sender.address());
    if (address.is_v4()) {
        return kSender | std::uint64_t{address.to_v4().to_uint()} << 16U | sender.port();
    }
    constexpr std::uint64_t kV6 = std::uint64_t{1} << 62U;
    return kSender | kV6 | (std::hash<boost::asio::ip::address>()(address) * 65537 + sender.port());
}

}  // namespace

CUdpPort::CUdpPort(const SNetContext& context, const SNetPortConfig& record)
    : CNetPort(context, Describe(record)), m_record(record) {}

CNetPort::SOpening CUdpPort::BeginOpen(const SNetPortConfig& record) {
    boost::system::error_code notLiteral;
    auto address = boost::asio::ip::make_address(record.dstIpAddress, notLiteral);
    if (notLiteral && !IsAnyAddress(record.ipAddress)) {
        address = boost::asio::ip::make_address(record.ipAddress, notLiteral);
    }
    SOpening opening;
    const Lock lock(m_mutex);
    opening.error = m_closed ? ErrorCut : Bind(!notLiteral && address.is_v6());
    return opening;
}

EnError CUdpPort::Deliver(const SNetPortConfig& record, std::string_view bytes) {
    if (bytes.size() > kLongestDatagram) {
        return ErrorTooLong;
    }
    if (!IsPort(record.dstPort, false)) {
        return ErrorNoAddress;
    }
    const auto deadline = Deadline();
    Addresses addresses;
    Lock lock(m_mutex, SSpinFirst());
    Use(record);
    if (const EnError error = Resolve(lock, record.dstIpAddress, deadline, addresses); error != ErrorNone) {
        return error;
    }
    const CTurn turn(*this, lock, deadline);
    if (turn.Error() != ErrorNone) {
        return turn.Error();
    }
    EnError error = Choose(addresses);
    for (const auto& address : addresses) {
        const Udp::endpoint destination(address, static_cast<std::uint16_t>(record.dstPort));
        error = SendToAddress(lock, destination, bytes, deadline);
        if (error == ErrorNone) {
            m_tally.TellCommand(bytes, error);
        }
        if (error == ErrorNone || error == ErrorCut) {
            return error;
        }
    }
    m_log.Failed("can't send to " + record.dstIpAddress, error);
    return error;
}

EnError CUdpPort::Choose(Addresses& addresses) const {
    const auto local = Literal(m_record.ipAddress);
    const bool v6 = local && local->is_v6();
    if (!IsAnyAddress(m_record.ipAddress)) {
        std::erase_if(addresses, [v6](const auto& address) { return address.is_v6() != v6; });
    }
    std::stable_partition(addresses.begin(), addresses.end(),
                          [v6](const auto& address) { return address.is_v6() == v6; });
    return addresses.empty() ? ErrorNoAddress : ErrorNone;
}

EnError CUdpPort::SendToAddress(Lock& lock, const Udp::endpoint& destination, std::string_view bytes,
                                Clock::time_point deadline) {
    const EnError error = Bind(destination.address().is_v6());
    return error == ErrorNone ? SendTo(lock, destination, bytes, deadline) : error;
}

void CUdpPort::Close() {
    const Lock lock(m_mutex);
    m_closed = true;
    m_sockets = {};
    m_changed.notify_all();
}

// Only where it is needed: with the option, another program that sets it too could take the datagrams.
void CUdpPort::Share() {
    const Lock lock(m_mutex);
    m_shared = true;
    for (const auto& socket : m_sockets) {
        if (socket) {
            boost::system::error_code ignored;  // the other port then can't bind, and reports that
            socket->set_option(boost::asio::socket_base::reuse_address(true), ignored);
        }
    }
}

EnError CUdpPort::Bind(bool v6) {
    auto& slot = m_sockets.at(v6 ? 1 : 0);
    if (slot) {
        return ErrorNone;
    }
    auto socket = std::make_unique<Udp::socket>(m_context.io);
    if (const EnError error = TryBind(*socket, v6); error != ErrorNone) {
        m_log.Failed("can't bind", error);
        m_tally.Become(EnPortState::Failed, error);
        return error;
    }
    slot = std::move(socket);
    m_log.Note("bound");
    m_tally.Become(EnPortState::Open);
    Watch(v6);
    return ErrorNone;
}

EnError CUdpPort::TryBind(Udp::socket& socket, bool v6) const {
    if (!IsPort(m_record.port, true)) {
        return ErrorNoAddress;
    }
    boost::system::error_code code;
    Udp::endpoint local(v6 ? Udp::v6() : Udp::v4(), static_cast<std::uint16_t>(m_record.port));
    if (!IsAnyAddress(m_record.ipAddress)) {
        local.address(boost::asio::ip::make_address(m_record.ipAddress, code));
        if (code || local.address().is_v6() != v6) {
            return ErrorNoAddress;
        }
    }
    socket.open(local.protocol(), code);
    if (!code) {
        socket.non_blocking(true, code);
    }
    if (!code) {
        socket.set_option(boost::asio::socket_base::broadcast(true), code);
    }
    if (!code && m_shared) {
        socket.set_option(boost::asio::socket_base::reuse_address(true), code);
    }
    if (!code && v6) {
        socket.set_option(boost::asio::ip::v6_only(true), code);
    }
    if (!code && !v6 && !IsAnyAddress(m_record.ipAddress)) {
        // Multicast leaves by the interface that the record names.
        socket.set_option(boost::asio::ip::multicast::outbound_interface(local.address().to_v4()), code);
    }
    if (!code) {
        socket.bind(local, code);
    }
    return SocketError(code);
}

EnError CUdpPort::SendTo(Lock& lock, const Udp::endpoint& destination, std::string_view bytes,
                         Clock::time_point deadline) {
    const bool v6 = destination.address().is_v6();
    for (;;) {
        const auto& socket = m_sockets.at(v6 ? 1 : 0);
        boost::system::error_code code;
        socket->send_to(boost::asio::buffer(bytes.data(), bytes.size()), destination, 0, code);
        if (code != boost::asio::error::would_block && code != boost::asio::error::interrupted) {
            return SocketError(code);
        }
        m_writable = false;
        socket->async_wait(Udp::socket::wait_write,
                           [self = shared_from_this(), this](const boost::system::error_code&) {
                               const Lock writable(m_mutex);
                               m_writable = true;
                               m_changed.notify_all();
                           });
        if (const EnError error =
                WaitUntil(lock, deadline, [this]() REQUIRES_LOCK(m_mutex) { return m_writable; });
            error != ErrorNone) {
            return error;
        }
    }
}

void CUdpPort::Watch(bool v6) {
    m_sockets.at(v6 ? 1 : 0)
        ->async_wait(Udp::socket::wait_read,
                     [self = shared_from_this(), this, v6](const boost::system::error_code& code) {
                         const Lock lock(m_mutex);
                         if (m_closed || code == boost::asio::error::operation_aborted) {
                             return;
                         }
                         Drain(*m_sockets.at(v6 ? 1 : 0));
                         Watch(v6);
                     });
}

void CUdpPort::Drain(Udp::socket& socket) {
    std::array<char, kLongestDatagram>
        bytes;  // NOLINT(cppcoreguidelines-pro-type-member-init): only written to
    for (int reads = 0; reads < kDatagramsAtOnce; ++reads) {
        boost::system::error_code code;
        Udp::endpoint from;
        const std::size_t size = socket.receive_from(boost::asio::buffer(bytes), from, 0, code);
        std::string text;
        m_tally.CountReceived({bytes.data(), size}, [&] {
            text = PairText(from.address(), from.port());
            return SPortPeer{NumberOf(from), text, true};
        });
        if (code == boost::asio::error::would_block || code == boost::asio::error::interrupted) {
            return;
        }
    }
}

}  // namespace comm
