#include "libraries/comm/TcpSocket.h"
#include "platform/windows/TcpOptions.h"

#include <winsock2.h>
// After winsock2.h, which it needs.
#include <mstcpip.h>

namespace comm {

namespace {

template <int Level, int Name>
using IntegerOption = boost::asio::detail::socket_option::integer<Level, Name>;

using Exclusive = boost::asio::detail::socket_option::boolean<SOL_SOCKET, SO_EXCLUSIVEADDRUSE>;

constexpr DWORD kIdle = 10000;       // milliseconds of silence before the first probe
constexpr DWORD kInterval = 3000;    // milliseconds between probes; their number is the system's
constexpr int kUnacknowledged = 10;  // seconds

}  // namespace

void SetKeepAlive(boost::asio::ip::tcp::socket& socket, boost::system::error_code& code) {
    tcp_keepalive settings{1, kIdle, kInterval};
    DWORD size = 0;
    if (WSAIoctl(socket.native_handle(), SIO_KEEPALIVE_VALS, &settings, sizeof settings, nullptr, 0, &size,
                 nullptr, nullptr) != 0) {
        code.assign(WSAGetLastError(), boost::system::system_category());
        return;
    }
    // Systems that lack these two go on with their own times.
    boost::system::error_code ignored;
    socket.set_option(IntegerOption<IPPROTO_TCP, kTcpKeepCount>(3), ignored);
    socket.set_option(IntegerOption<IPPROTO_TCP, kTcpMaxRetransmit>(kUnacknowledged), ignored);
    code = {};
}

bool HasUnacknowledged(boost::asio::ip::tcp::socket& socket) {
    DWORD version = 0;
    TCP_INFO_v0 info{};
    DWORD size = 0;
    return WSAIoctl(socket.native_handle(), SIO_TCP_INFO, &version, sizeof version, &info, sizeof info, &size,
                    nullptr, nullptr) == 0 &&
           info.BytesInFlight > 0;
}

// Wine's select reports an end, but not data that it is about to give to the wait under way.
bool IsReadOnItsWay(boost::asio::ip::tcp::socket& socket) {
    u_long waiting = 0;
    if (ioctlsocket(socket.native_handle(), FIONREAD, &waiting) == 0 && waiting > 0) {
        return true;
    }
    fd_set sockets;
    FD_ZERO(&sockets);
    FD_SET(socket.native_handle(), &sockets);
    timeval none{0, 0};
    return select(0, &sockets, nullptr, nullptr, &none) == 1;
}

// A port whose connections are still closing can be taken without more; the option keeps out other programs.
void SetListenerReuse(boost::asio::ip::tcp::acceptor& acceptor, boost::system::error_code& code) {
    acceptor.set_option(Exclusive(true), code);
}

void WhenConnecting(boost::asio::ip::tcp::acceptor& acceptor, boost::asio::ip::tcp::socket& next,
                    std::function<void(const boost::system::error_code&)> handler) {
    acceptor.async_accept(next, std::move(handler));
}

void TakeConnection(boost::asio::ip::tcp::acceptor& /*acceptor*/, boost::asio::ip::tcp::socket& /*next*/,
                    boost::system::error_code& /*code*/) {}

}  // namespace comm
