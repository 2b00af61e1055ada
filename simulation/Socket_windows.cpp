#include "simulation/Socket.h"

#include <array>
#include <system_error>
#include <utility>

#include <winsock2.h>
// After winsock2.h, which it needs.
#include <ws2tcpip.h>

namespace simulation {

namespace {

struct Address {
    Address(const char* ip, int port) {
        value.sin_family = AF_INET;
        value.sin_port = htons(static_cast<std::uint16_t>(port));
        inet_pton(AF_INET, ip, &value.sin_addr);
    }
    sockaddr* Raw() { return static_cast<sockaddr*>(static_cast<void*>(&value)); }

    sockaddr_in value{};
    int size = sizeof value;
};

void Check(bool good, const char* what) {
    if (!good) {
        throw std::system_error(WSAGetLastError(), std::system_category(), what);
    }
}

SOCKET Native(int handle) {
    return static_cast<SOCKET>(handle);
}

/** Kernel handles are small numbers, so that an int holds a socket. */
int NumberOf(SOCKET socket) {
    return socket == INVALID_SOCKET ? -1 : static_cast<int>(socket);
}

/** The result of a call that waits: a time-out means that its bound was reached. */
std::size_t Waited(int result, const char* what) {
    if (result < 0 && WSAGetLastError() == WSAETIMEDOUT) {
        throw TimedOut(what);
    }
    Check(result >= 0, what);
    return static_cast<std::size_t>(result);
}

bool Poll(int handle, bool forWriting, milliseconds limit) {
    fd_set set;
    FD_ZERO(&set);
    FD_SET(Native(handle), &set);
    timeval bound{static_cast<long>(limit.count() / 1000), static_cast<long>(limit.count() % 1000 * 1000)};
    return select(0, forWriting ? nullptr : &set, forWriting ? &set : nullptr, nullptr, &bound) > 0;
}

void SetOption(int handle, int level, int name, DWORD value) {
    setsockopt(Native(handle), level, name, static_cast<const char*>(static_cast<const void*>(&value)),
               sizeof value);
}

void SetOptions(int handle) {
    SetOption(handle, IPPROTO_TCP, TCP_NODELAY, 1);
    SetOption(handle, SOL_SOCKET, SO_RCVTIMEO, static_cast<DWORD>(kMaxTestWait.count()));
    SetOption(handle, SOL_SOCKET, SO_SNDTIMEO, static_cast<DWORD>(kMaxTestWait.count()));
}

int MakeSocket(int type) {
    static const bool ready = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(2, 2), &data) == 0;
    }();
    static_cast<void>(ready);
    // Not inherited: a child that held it would keep the connection open.
    return NumberOf(
        WSASocketW(AF_INET, type, 0, nullptr, 0, WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT));
}

}  // namespace

Socket::Socket(int type, const char* address, int port) : m_handle(MakeSocket(type)) {
    Check(m_handle >= 0, "socket");
    SetOptions(m_handle);
    Address local(address, port);
    Check(bind(Native(m_handle), local.Raw(), local.size) == 0, "bind");
}

Socket Socket::Connect(int port, const char* from, bool begin) {
    Socket result(SOCK_STREAM, from, 0);
    Address remote("127.0.0.1", port);
    u_long nonBlocking = begin ? 1 : 0;
    ioctlsocket(Native(result.m_handle), static_cast<long>(FIONBIO), &nonBlocking);
    Check(connect(Native(result.m_handle), remote.Raw(), remote.size) == 0 ||
              WSAGetLastError() == WSAEWOULDBLOCK,
          "connect");
    return result;
}

Socket Socket::Listen(int port, int backlog, const char* address) {
    Socket result(SOCK_STREAM, address, port);
    Check(listen(Native(result.m_handle), backlog) == 0, "listen");
    return result;
}

Socket Socket::Udp() {
    return Socket(SOCK_DGRAM, "127.0.0.1", 0);
}

Socket Socket::Accept() {
    Socket result;
    if (!WaitReadable(kMaxTestWait)) {
        throw TimedOut("accept");
    }
    result.m_handle = NumberOf(accept(Native(m_handle), nullptr, nullptr));
    Check(result.m_handle >= 0, "accept");
    SetOptions(result.m_handle);
    return result;
}

void Socket::Send(std::string_view bytes) {
    while (!bytes.empty()) {
        bytes.remove_prefix(
            Waited(send(Native(m_handle), bytes.data(), static_cast<int>(bytes.size()), 0), "send"));
    }
}

std::string Socket::Receive() {
    std::array<char, 65536> buffer;
    const int size = recv(Native(m_handle), buffer.data(), static_cast<int>(buffer.size()), 0);
    const bool isReset =
        size < 0 && (WSAGetLastError() == WSAECONNRESET || WSAGetLastError() == WSAECONNABORTED);
    return isReset ? "" : std::string(buffer.data(), Waited(size, "receive"));
}

bool Socket::WaitReadable(milliseconds limit) const {
    return Poll(m_handle, false, limit);
}

bool Socket::WaitConnected(milliseconds limit) const {
    return Poll(m_handle, true, limit);
}

void Socket::ShutdownSend() {
    shutdown(Native(m_handle), SD_SEND);
}

void Socket::Reset() {
    const linger none{1, 0};
    setsockopt(Native(m_handle), SOL_SOCKET, SO_LINGER,
               static_cast<const char*>(static_cast<const void*>(&none)), sizeof none);
    Close();
}

void Socket::Close() {
    if (IsOpen()) {
        closesocket(Native(std::exchange(m_handle, -1)));
    }
}

int Socket::LocalPort() const {
    Address address("0.0.0.0", 0);
    Check(getsockname(Native(m_handle), address.Raw(), &address.size) == 0, "getsockname");
    return ntohs(address.value.sin_port);
}

}  // namespace simulation
