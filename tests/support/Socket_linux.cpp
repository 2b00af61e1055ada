#include "support/Socket.h"

#include <array>
#include <cerrno>
#include <random>
#include <system_error>
#include <utility>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace support {

namespace {

[[noreturn]] void ThrowSystem(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

sockaddr_in Address(const std::string& ip, int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    inet_pton(AF_INET, ip.c_str(), &address.sin_addr);
    return address;
}

const sockaddr* Raw(const sockaddr_in& address) {
    return static_cast<const sockaddr*>(static_cast<const void*>(&address));
}

int Open(int type) {
    const int handle = socket(AF_INET, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (handle < 0) {
        ThrowSystem("socket");
    }
    const int on = 1;
    if (type == SOCK_STREAM) {
        setsockopt(handle, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        setsockopt(handle, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    }
    return handle;
}

bool WaitFor(std::intptr_t handle, short events, milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (true) {
        const auto left = std::chrono::ceil<milliseconds>(end - std::chrono::steady_clock::now());
        pollfd entry{static_cast<int>(handle), events, 0};
        const int ready = poll(&entry, 1, static_cast<int>(std::max<milliseconds::rep>(0, left.count())));
        if (ready >= 0) {
            return ready > 0;
        }
        if (errno != EINTR) {
            ThrowSystem("poll");
        }
    }
}

}  // namespace

Socket::Socket(Socket&& other) noexcept : m_handle(std::exchange(other.m_handle, -1)) {}

Socket& Socket::operator=(Socket&& other) noexcept {
    if (this != &other) {
        Close();
        m_handle = std::exchange(other.m_handle, -1);
    }
    return *this;
}

Socket Socket::Connect(int port, const std::string& from, milliseconds limit) {
    Socket result = BeginConnect(port, from);
    if (!result.WaitConnected(limit)) {
        throw TimedOut("connection to port " + std::to_string(port));
    }
    int error = 0;
    socklen_t size = sizeof error;
    getsockopt(result.Handle(), SOL_SOCKET, SO_ERROR, &error, &size);
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), "connect to port " + std::to_string(port));
    }
    return result;
}

Socket Socket::BeginConnect(int port, const std::string& from) {
    Socket result(Open(SOCK_STREAM));
    if (from != "127.0.0.1") {
        const sockaddr_in local = Address(from, 0);
        if (bind(result.Handle(), Raw(local), sizeof local) != 0) {
            ThrowSystem("bind");
        }
    }
    const sockaddr_in remote = Address("127.0.0.1", port);
    if (connect(result.Handle(), Raw(remote), sizeof remote) != 0 && errno != EINPROGRESS) {
        ThrowSystem("connect");
    }
    return result;
}

Socket Socket::Listen(int port, int backlog) {
    Socket result(Open(SOCK_STREAM));
    const sockaddr_in local = Address("127.0.0.1", port);
    if (bind(result.Handle(), Raw(local), sizeof local) != 0 || listen(result.Handle(), backlog) != 0) {
        ThrowSystem("listen");
    }
    return result;
}

Socket Socket::Udp(int port) {
    Socket result(Open(SOCK_DGRAM));
    const sockaddr_in local = Address("127.0.0.1", port);
    if (bind(result.Handle(), Raw(local), sizeof local) != 0) {
        ThrowSystem("bind");
    }
    return result;
}

Socket Socket::Accept(milliseconds limit) {
    if (!WaitReadable(limit)) {
        throw TimedOut("accept");
    }
    const int handle = accept4(Handle(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (handle < 0) {
        ThrowSystem("accept");
    }
    return Socket(handle);
}

void Socket::Send(std::string_view bytes, milliseconds limit) {
    while (!bytes.empty()) {
        const ssize_t sent = send(Handle(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        } else if (errno != EAGAIN) {
            ThrowSystem("send");
        } else if (!WaitFor(m_handle, POLLOUT, limit)) {
            throw TimedOut("send");
        }
    }
}

std::string Socket::Receive(milliseconds limit) {
    std::array<char, 65536> buffer;
    while (true) {
        const ssize_t size = recv(Handle(), buffer.data(), buffer.size(), 0);
        if (size >= 0) {
            return {buffer.data(), static_cast<std::size_t>(size)};
        }
        if (errno == ECONNRESET || errno == EPIPE) {
            return {};
        }
        if (errno != EAGAIN && errno != EINTR) {
            ThrowSystem("recv");
        }
        if (!WaitReadable(limit)) {
            throw TimedOut("receive");
        }
    }
}

bool Socket::WaitReadable(milliseconds limit) const {
    return WaitFor(m_handle, POLLIN, limit);
}

bool Socket::WaitConnected(milliseconds limit) const {
    return WaitFor(m_handle, POLLOUT, limit);
}

void Socket::ShutdownSend() {
    shutdown(Handle(), SHUT_WR);
}

void Socket::Reset() {
    const linger none{1, 0};
    setsockopt(Handle(), SOL_SOCKET, SO_LINGER, &none, sizeof none);
    Close();
}

void Socket::Close() {
    if (IsOpen()) {
        close(Handle());
        m_handle = -1;
    }
}

int Socket::LocalPort() const {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    if (getsockname(Handle(), static_cast<sockaddr*>(static_cast<void*>(&address)), &size) != 0) {
        ThrowSystem("getsockname");
    }
    return ntohs(address.sin_port);
}

int FreePort() {
    static std::mt19937 random{std::random_device{}()};
    while (true) {
        const int port = std::uniform_int_distribution<int>(15000, 32000)(random);
        Socket attempt(Open(SOCK_STREAM));
        const sockaddr_in local = Address("0.0.0.0", port);
        if (bind(attempt.Handle(), Raw(local), sizeof local) == 0 && listen(attempt.Handle(), 1) == 0) {
            return port;
        }
    }
}

}  // namespace support
