#include "libraries/http/src/ServerSocket.h"

#include <netinet/tcp.h>
#include <sys/socket.h>

namespace hv::internal {

namespace {

void SetInteger(int descriptor, int level, int name, int value) {
    // A kernel that lacks one of these options serves on with its own default.
    static_cast<void>(::setsockopt(descriptor, level, name, &value, sizeof value));
}

}  // namespace

void SetListenerOptions(Acceptor& listener) {
    // The accepted sockets inherit all of these.
    const int descriptor = listener.native_handle();
    SetInteger(descriptor, SOL_SOCKET, SO_REUSEADDR, 1);
    SetInteger(descriptor, SOL_SOCKET, SO_KEEPALIVE, 1);
    SetInteger(descriptor, IPPROTO_TCP, TCP_NODELAY, 1);
    SetInteger(descriptor, IPPROTO_TCP, TCP_KEEPIDLE, 45);
    SetInteger(descriptor, IPPROTO_TCP, TCP_KEEPINTVL, 15);
    SetInteger(descriptor, IPPROTO_TCP, TCP_KEEPCNT, 4);
    SetInteger(descriptor, IPPROTO_TCP, TCP_USER_TIMEOUT, 105'000);
}

void SetConnectionOptions(Socket& socket) {
    boost::system::error_code ignored;
    socket.non_blocking(true, ignored);
}

void CloseNow(Socket& socket) {
    boost::system::error_code ignored;  // closing frees the socket in any case
    socket.close(ignored);
}

}  // namespace hv::internal
