#include "simulation/Socket.h"

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

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
    socklen_t size = sizeof value;
};

void Check(bool good, const char* what) {
    if (!good) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

/** The result of a call that waits: EAGAIN means that its bound was reached. */
std::size_t Waited(ssize_t result, const char* what) {
    if (result < 0 && errno == EAGAIN) {
        throw TimedOut(what);
    }
    Check(result >= 0, what);
    return static_cast<std::size_t>(result);
}

bool Poll(int handle, short events, milliseconds limit) {
    pollfd entry{handle, events, 0};
    return poll(&entry, 1, static_cast<int>(limit.count())) > 0;
}

void SetOptions(int handle) {
    const int on = 1;
    const timeval bound{kMaxTestWait.count() / 1000, 0};
    setsockopt(handle, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    setsockopt(handle, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    setsockopt(handle, SOL_SOCKET, SO_RCVTIMEO, &bound, sizeof bound);
    setsockopt(handle, SOL_SOCKET, SO_SNDTIMEO, &bound, sizeof bound);
}

}  // namespace

Socket::Socket(int type, const char* address, int port) : m_handle(socket(AF_INET, type | SOCK_CLOEXEC, 0)) {
    Check(m_handle >= 0, "socket");
    SetOptions(m_handle);
    Address local(address, port);
    Check(bind(m_handle, local.Raw(), local.size) == 0, "bind");
}

Socket Socket::Connect(int port, const char* from, bool begin) {
    Socket result(SOCK_STREAM, from, 0);
    Address remote("127.0.0.1", port);
    fcntl(result.m_handle, F_SETFL, begin ? O_NONBLOCK : 0);
    Check(connect(result.m_handle, remote.Raw(), remote.size) == 0 || errno == EINPROGRESS, "connect");
    return result;
}

Socket Socket::Listen(int port, int backlog, const char* address) {
    Socket result(SOCK_STREAM, address, port);
    Check(listen(result.m_handle, backlog) == 0, "listen");
    return result;
}

Socket Socket::Udp() {
    return Socket(SOCK_DGRAM, "127.0.0.1", 0);
}

Socket Socket::Accept() {
    Socket result;
    result.m_handle = static_cast<int>(Waited(accept4(m_handle, nullptr, nullptr, SOCK_CLOEXEC), "accept"));
    SetOptions(result.m_handle);
    return result;
}

void Socket::Send(std::string_view bytes) {
    while (!bytes.empty()) {
        bytes.remove_prefix(Waited(send(m_handle, bytes.data(), bytes.size(), MSG_NOSIGNAL), "send"));
    }
}

std::string Socket::Receive() {
    std::array<char, 65536> buffer;
    const ssize_t size = recv(m_handle, buffer.data(), buffer.size(), 0);
    return size < 0 && errno == ECONNRESET ? "" : std::string(buffer.data(), Waited(size, "receive"));
}

bool Socket::WaitReadable(milliseconds limit) const {
    return Poll(m_handle, POLLIN, limit);
}

bool Socket::WaitConnected(milliseconds limit) const {
    return Poll(m_handle, POLLOUT, limit);
}

void Socket::ShutdownSend() {
    shutdown(m_handle, SHUT_WR);
}

void Socket::Reset() {
    const linger none{1, 0};
    setsockopt(m_handle, SOL_SOCKET, SO_LINGER, &none, sizeof none);
    Close();
}

void Socket::Close() {
    if (IsOpen()) {
        close(std::exchange(m_handle, -1));
    }
}

int Socket::LocalPort() const {
    Address address("0.0.0.0", 0);
    Check(getsockname(m_handle, address.Raw(), &address.size) == 0, "getsockname");
    return ntohs(address.value.sin_port);
}

}  // namespace simulation
