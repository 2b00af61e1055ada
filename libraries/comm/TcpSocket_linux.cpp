#include "libraries/comm/TcpSocket.h"

#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace comm {

namespace {

template <int Name>
using TcpOption = boost::asio::detail::socket_option::integer<IPPROTO_TCP, Name>;

}  // namespace

void SetKeepAlive(boost::asio::ip::tcp::socket& socket, boost::system::error_code& code) {
    socket.set_option(boost::asio::socket_base::keep_alive(true), code);
    if (!code) {
        socket.set_option(TcpOption<TCP_KEEPIDLE>(10), code);
    }
    if (!code) {
        socket.set_option(TcpOption<TCP_KEEPINTVL>(3), code);
    }
    if (!code) {
        socket.set_option(TcpOption<TCP_KEEPCNT>(3), code);
    }
    if (!code) {
        socket.set_option(TcpOption<TCP_USER_TIMEOUT>(10000), code);
    }
}

bool HasUnacknowledged(boost::asio::ip::tcp::socket& socket) {
    int bytes = 0;
    return ioctl(socket.native_handle(), SIOCOUTQ, &bytes) == 0 && bytes > 0;
}

bool IsReadOnItsWay(boost::asio::ip::tcp::socket& /*socket*/) {
    return false;
}

void SetListenerReuse(boost::asio::ip::tcp::acceptor& acceptor, boost::system::error_code& code) {
    acceptor.set_option(boost::asio::socket_base::reuse_address(true), code);
}

void WhenConnecting(boost::asio::ip::tcp::acceptor& acceptor, boost::asio::ip::tcp::socket& /*next*/,
                    std::function<void(const boost::system::error_code&)> handler) {
    acceptor.async_wait(boost::asio::ip::tcp::acceptor::wait_read, std::move(handler));
}

void TakeConnection(boost::asio::ip::tcp::acceptor& acceptor, boost::asio::ip::tcp::socket& next,
                    boost::system::error_code& code) {
    acceptor.accept(next, code);
}

}  // namespace comm
