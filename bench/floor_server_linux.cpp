/**
 * The least that a server can do about a click: read the request up to the end of its body, write a payload
 * to the equipment, answer. One thread, one epoll, no parsing beyond the length of the request, no logs, no
 * checks. What the real server needs beyond this is its own work, so this is the floor of all comparisons.
 *
 *   floor_server <port> <equipment port> <payload> <body of the answer to a GET>
 */
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr std::string_view kSuccess = R"({"code":20000,"message":""})";

[[noreturn]] void Fail(const char* what) {
    std::perror(what);
    std::exit(1);
}

sockaddr_in Loopback(const char* port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(std::strtol(port, nullptr, 10)));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

const sockaddr* Raw(const sockaddr_in& address) {
    return static_cast<const sockaddr*>(static_cast<const void*>(&address));
}

void SetNoDelay(int handle) {
    const int on = 1;
    setsockopt(handle, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

int Listen(const char* port) {
    const int handle = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    const int on = 1;
    setsockopt(handle, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in address = Loopback(port);
    if (bind(handle, Raw(address), sizeof address) != 0 || listen(handle, 1024) != 0) {
        Fail("listen");
    }
    return handle;
}

int Connect(const char* port) {
    const int handle = socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in address = Loopback(port);
    if (connect(handle, Raw(address), sizeof address) != 0) {
        Fail("connect");
    }
    SetNoDelay(handle);
    return handle;
}

std::string Answer(std::string_view body) {
    return "HTTP/1.1 200 OK\r\nContent-Type: application/json; charset=utf-8\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\n\r\n" + std::string(body);
}

/** Size of the request at the front of the bytes, head and body; 0 while it is not whole. */
std::size_t RequestSize(std::string_view bytes) {
    const std::size_t head = bytes.find("\r\n\r\n");
    if (head == std::string_view::npos) {
        return 0;
    }
    std::size_t body = 0;
    constexpr std::string_view kLength = "Content-Length: ";
    const std::size_t at = bytes.substr(0, head).find(kLength);
    if (at != std::string_view::npos) {
        std::from_chars(bytes.data() + at + kLength.size(), bytes.data() + head, body);
    }
    const std::size_t size = head + 4 + body;
    return bytes.size() >= size ? size : 0;
}

class Floor {
  public:
    Floor(const char* port, const char* equipment, std::string payload, std::string_view document)
        : m_listener(Listen(port)),
          m_equipment(Connect(equipment)),
          m_poll(epoll_create1(0)),
          m_payload(std::move(payload)),
          m_clickAnswer(Answer(kSuccess)),
          m_getAnswer(Answer(document)) {
        Watch(m_listener);
    }

    [[noreturn]] void Run() {
        std::array<epoll_event, 256> events;
        while (true) {
            const int count = epoll_wait(m_poll, events.data(), static_cast<int>(events.size()), -1);
            for (int i = 0; i < count; ++i) {
                const int handle = events[static_cast<std::size_t>(i)].data.fd;
                if (handle == m_listener) {
                    AcceptAll();
                } else {
                    Serve(handle);
                }
            }
        }
    }

  private:
    void Watch(int handle) const {
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.fd = handle;
        epoll_ctl(m_poll, EPOLL_CTL_ADD, handle, &event);
    }

    void AcceptAll() {
        for (int handle = 0; (handle = accept4(m_listener, nullptr, nullptr, SOCK_NONBLOCK)) >= 0;) {
            SetNoDelay(handle);
            Watch(handle);
        }
    }

    void Serve(int handle) {
        const ssize_t size = recv(handle, m_buffer.data(), m_buffer.size(), 0);
        if (size <= 0) {
            if (size == 0 || errno != EAGAIN) {
                m_rests.erase(handle);
                close(handle);
            }
            return;
        }
        std::string_view bytes(m_buffer.data(), static_cast<std::size_t>(size));
        std::string whole;
        if (const auto rest = m_rests.find(handle); rest != m_rests.end()) {
            whole = std::move(rest->second.append(bytes));
            m_rests.erase(rest);
            bytes = whole;
        }
        for (std::size_t request = 0; (request = RequestSize(bytes)) != 0; bytes.remove_prefix(request)) {
            const bool isClick = bytes.front() == 'P';
            if (isClick) {
                Send(m_equipment, m_payload);
            }
            Send(handle, isClick ? m_clickAnswer : m_getAnswer);
        }
        if (!bytes.empty()) {
            m_rests[handle] = std::string(bytes);
        }
    }

    static void Send(int handle, std::string_view bytes) {
        while (!bytes.empty()) {
            const ssize_t sent = send(handle, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (sent >= 0) {
                bytes.remove_prefix(static_cast<std::size_t>(sent));
            } else if (errno == EAGAIN) {
                pollfd entry{handle, POLLOUT, 0};
                poll(&entry, 1, -1);
            } else {
                return;
            }
        }
    }

    int m_listener;
    int m_equipment;
    int m_poll;
    std::string m_payload;
    std::string m_clickAnswer;
    std::string m_getAnswer;
    std::array<char, 65536> m_buffer{};
    std::unordered_map<int, std::string> m_rests;  ///< beginnings of requests that are not whole yet
};

}  // namespace

int main(int count, char** arguments) {
    if (count != 5) {
        std::fputs("usage: floor_server <port> <equipment port> <payload> <document>\n", stderr);
        return 2;
    }
    Floor(arguments[1], arguments[2], arguments[3], arguments[4]).Run();
}
