#include "libraries/comm/TcpLink.h"

#include "libraries/comm/EndPoint.h"
#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/TcpSocket.h"

#include <array>
#include <atomic>

#include <boost/asio/buffer.hpp>

namespace comm {

namespace {

constexpr int kSendBuffer = 64 * 1024;

/** Reads in one go, so that a peer that never stops can't keep the thread. */
constexpr int kReadsAtOnce = 16;

std::atomic<std::uint64_t> g_lastNumber = 0;

bool IsNotNow(const boost::system::error_code& code) {
    return code == boost::asio::error::would_block || code == boost::asio::error::try_again ||
           code == boost::asio::error::interrupted;
}

}  // namespace

CTcpLink::CTcpLink(Socket socket) : m_socket(std::move(socket)), m_number(++g_lastNumber) {}

EnError CTcpLink::Prepare() {
    boost::system::error_code code;
    m_socket.non_blocking(true, code);
    if (!code) {
        m_socket.set_option(boost::asio::ip::tcp::no_delay(true), code);
    }
    if (!code) {
        m_socket.set_option(boost::asio::socket_base::send_buffer_size(kSendBuffer), code);
    }
    if (!code) {
        SetKeepAlive(m_socket, code);
    }
    return SocketError(code);
}

CTcpLink::EnPeer CTcpLink::Drain(EnError& error, CPortTally& tally) {
    std::array<char, 16 * 1024> bytes;  // NOLINT(cppcoreguidelines-pro-type-member-init): only written to
    error = ErrorNone;
    for (int reads = 0; reads < kReadsAtOnce; ++reads) {
        boost::system::error_code code;
        const std::size_t size = m_socket.receive(boost::asio::buffer(bytes), 0, code);
        tally.CountReceived({bytes.data(), size}, [this] { return Peer(); });
        if (IsNotNow(code)) {
            return IsReadOnItsWay(m_socket) ? EnPeer::Unknown : EnPeer::Alive;
        }
        if (code == boost::asio::error::eof) {
            return EnPeer::Ended;
        }
        if (code) {
            error = SocketError(code);
            return EnPeer::Broken;
        }
    }
    return EnPeer::Alive;
}

SPortPeer CTcpLink::Peer() {
    if (m_peer.empty()) {
        boost::system::error_code gone;
        if (const auto from = m_socket.remote_endpoint(gone); !gone) {
            m_peer = PairText(from.address(), from.port());
        }
    }
    return {m_number, m_peer, false};
}

EnError CTcpLink::Write(std::string_view& rest) {
    while (!rest.empty()) {
        boost::system::error_code code;
        rest.remove_prefix(m_socket.send(boost::asio::buffer(rest.data(), rest.size()), 0, code));
        if (IsNotNow(code)) {
            return ErrorNone;
        }
        if (code) {
            return SocketError(code);
        }
    }
    return ErrorNone;
}

}  // namespace comm
