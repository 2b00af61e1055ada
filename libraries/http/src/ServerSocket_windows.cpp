#include "libraries/http/src/ServerSocket.h"
#include "platform/windows/TcpOptions.h"

#include <winsock2.h>

namespace hv::internal {

namespace {

void SetInteger(SOCKET socket, int level, int name, int value) {
    // A system that lacks one of these options serves on with its own default.
    static_cast<void>(::setsockopt(socket, level, name, reinterpret_cast<const char*>(&value), sizeof value));
}

}  // namespace

void SetListenerOptions(Acceptor& listener) {
    // A port whose connections are still closing can be taken without more; the option keeps out other
    // programs.
    SetInteger(listener.native_handle(), SOL_SOCKET, SO_EXCLUSIVEADDRUSE, 1);
}

void SetConnectionOptions(Socket& socket) {
    boost::system::error_code ignored;
    socket.non_blocking(true, ignored);
    const SOCKET handle = socket.native_handle();
    SetInteger(handle, IPPROTO_TCP, TCP_NODELAY, 1);
    SetInteger(handle, SOL_SOCKET, SO_KEEPALIVE, 1);
    SetInteger(handle, IPPROTO_TCP, kTcpKeepIdle, 45);
    SetInteger(handle, IPPROTO_TCP, kTcpKeepInterval, 15);
    SetInteger(handle, IPPROTO_TCP, kTcpKeepCount, 4);
    SetInteger(handle, IPPROTO_TCP, kTcpMaxRetransmit, 105);
}

// Windows ends outstanding operations together with the socket. Wine keeps them, and the connection, until
// the client reads.
void CloseNow(Socket& socket) {
    boost::system::error_code ignored;  // closing frees the socket in any case
    socket.cancel(ignored);
    socket.close(ignored);
}

}  // namespace hv::internal
