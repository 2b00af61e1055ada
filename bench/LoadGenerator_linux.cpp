#include "bench/LoadGenerator.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include <strings.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace bench {

namespace {

using Clock = std::chrono::steady_clock;

double Microseconds(Clock::duration time) {
    return std::chrono::duration<double, std::micro>(time).count();
}

/** Size of the reply that begins here, 0 while its head is not whole. @throw for anything but a success. */
std::size_t ReplySize(std::string_view bytes) {
    const std::size_t head = bytes.find("\r\n\r\n");
    if (head == std::string_view::npos) {
        return 0;
    }
    constexpr std::string_view kLength = "\r\nContent-Length: ";
    const auto at =
        std::search(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(head), kLength.begin(),
                    kLength.end(), [](char a, char b) { return (a | 0x20) == (b | 0x20); });
    std::size_t body = 0;
    std::from_chars(&*at + kLength.size(), bytes.data() + head, body);
    if (bytes.substr(0, 12) != "HTTP/1.1 200") {
        throw std::runtime_error("reply " + std::string(bytes.substr(0, 200)));
    }
    constexpr std::string_view kSuccess = R"({"code":20000)";
    const std::string_view begin = bytes.substr(head + 4, kSuccess.size());
    if (begin.size() == kSuccess.size() && begin.starts_with(R"({"code":)") && begin != kSuccess) {
        throw std::runtime_error("reply " + std::string(bytes.substr(0, 400)));
    }
    return head + 4 + body;
}

}  // namespace

double Quantile(std::vector<double> values, double share) {
    if (values.empty()) {
        return std::nan("");
    }
    const auto at = static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + at, values.end());
    return values[static_cast<std::size_t>(at)];
}

/** One keep-alive connection with at most one request under way. */
struct LoadGenerator::Connection {
    simulation::Socket socket;
    std::size_t next = 0;  ///< the request to send next
    Clock::time_point sent;
    std::string received;         ///< the beginning of a head that came in pieces
    std::size_t outstanding = 0;  ///< what is still to come of a reply whose head was there

    void Send(const std::vector<std::string>& requests) {
        const std::string& request = requests[next++ % requests.size()];
        sent = Clock::now();
        if (send(socket.Handle(), request.data(), request.size(), MSG_NOSIGNAL) !=
            static_cast<ssize_t>(request.size())) {
            throw std::runtime_error("a request did not go out");
        }
    }

    /** Reads what is there. @return whether a whole reply has come */
    bool Read(std::vector<char>& buffer) {
        const ssize_t size = recv(socket.Handle(), buffer.data(), buffer.size(), 0);
        if (size <= 0) {
            if (size < 0 && errno == EAGAIN) {
                return false;
            }
            throw std::runtime_error("the server closed a connection");
        }
        std::string_view bytes(buffer.data(), static_cast<std::size_t>(size));
        if (outstanding == 0) {
            if (!received.empty()) {
                received += bytes;
                bytes = received;
            }
            outstanding = ReplySize(bytes);
            if (outstanding == 0) {
                received = std::string(bytes);
                return false;
            }
        }
        outstanding -= bytes.size();
        received.clear();
        return outstanding == 0;
    }
};

LoadGenerator::LoadGenerator()
    : m_listener(simulation::Socket::Listen()), m_poll(epoll_create1(EPOLL_CLOEXEC)), m_buffer(1 << 20) {
    Watch(m_listener.Handle());
}

LoadGenerator::~LoadGenerator() {
    close(m_poll);
}

void LoadGenerator::Watch(int handle) const {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = handle;
    epoll_ctl(m_poll, EPOLL_CTL_ADD, handle, &event);
}

void LoadGenerator::AcceptEquipment() {
    m_equipment.push_back(m_listener.Accept());
    Watch(m_equipment.back().Handle());
}

void LoadGenerator::ReadEquipment(int handle) {
    const ssize_t size = recv(handle, m_buffer.data(), m_buffer.size(), 0);
    if (size > 0) {
        m_equipmentBytes += static_cast<std::uint64_t>(size);
    } else if (size == 0 || errno != EAGAIN) {
        std::erase_if(m_equipment,
                      [&](const simulation::Socket& socket) { return socket.Handle() == handle; });
    }
}

LoadResult LoadGenerator::Run(int port, const std::vector<std::string>& requests, int connections,
                              std::chrono::milliseconds time) {
    std::vector<Connection> all(static_cast<std::size_t>(connections));
    std::vector<Connection*> byHandle;
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i].socket = simulation::Socket::Connect(port);
        all[i].next = i * requests.size() / all.size();
        const auto handle = static_cast<std::size_t>(all[i].socket.Handle());
        byHandle.resize(std::max(byHandle.size(), handle + 1));
        byHandle[handle] = &all[i];
        Watch(all[i].socket.Handle());
    }
    LoadResult result;
    result.microseconds.reserve(1 << 18);
    const Clock::time_point begin = Clock::now();
    const Clock::time_point end = begin + time;
    for (Connection& connection : all) {
        connection.Send(requests);
    }
    std::array<epoll_event, 256> events;
    for (std::size_t underWay = all.size(); underWay > 0;) {
        const int count = epoll_wait(m_poll, events.data(), static_cast<int>(events.size()), 10000);
        if (count == 0) {
            throw std::runtime_error("no reply within 10 s");
        }
        for (int i = 0; i < count; ++i) {
            const int handle = events[static_cast<std::size_t>(i)].data.fd;
            const auto index = static_cast<std::size_t>(handle);
            Connection* connection = index < byHandle.size() ? byHandle[index] : nullptr;
            if (handle == m_listener.Handle()) {
                AcceptEquipment();
            } else if (connection == nullptr) {
                ReadEquipment(handle);
            } else if (connection->Read(m_buffer)) {
                const Clock::time_point now = Clock::now();
                result.microseconds.push_back(Microseconds(now - connection->sent));
                result.replies += now < end ? 1 : 0;
                if (now < end) {
                    connection->Send(requests);
                } else {
                    --underWay;
                }
            }
        }
    }
    result.seconds = std::chrono::duration<double>(time).count();
    return result;
}

LoadResult LoadGenerator::Click(int port, const std::vector<std::string>& requests, std::size_t payloadSize,
                                std::chrono::milliseconds time) {
    Connection connection{simulation::Socket::Connect(port), 0, {}, {}};
    Watch(connection.socket.Handle());
    LoadResult result;
    const Clock::time_point begin = Clock::now();
    for (Clock::time_point now = begin; now < begin + time; now = Clock::now()) {
        const std::uint64_t before = m_equipmentBytes;
        bool arrived = false;
        bool replied = false;
        connection.Send(requests);
        while (!replied || m_equipmentBytes - before < payloadSize) {
            std::array<epoll_event, 8> events;
            const int count = epoll_wait(m_poll, events.data(), static_cast<int>(events.size()), 0);
            for (int i = 0; i < count; ++i) {
                const int handle = events[static_cast<std::size_t>(i)].data.fd;
                if (handle == connection.socket.Handle()) {
                    replied = connection.Read(m_buffer) || replied;
                } else if (handle == m_listener.Handle()) {
                    AcceptEquipment();
                } else {
                    ReadEquipment(handle);
                }
            }
            if (!arrived && m_equipmentBytes > before) {
                arrived = true;
                result.microseconds.push_back(Microseconds(Clock::now() - connection.sent));
            }
            if (Clock::now() - connection.sent > std::chrono::seconds(10)) {
                throw std::runtime_error("a click had no effect within 10 s");
            }
        }
        ++result.replies;
    }
    result.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    return result;
}

bool LoadGenerator::DrainEquipment(std::uint64_t bytes) {
    const auto drain = [&] {
        std::array<epoll_event, 64> events;
        const int count = epoll_wait(m_poll, events.data(), static_cast<int>(events.size()), 0);
        for (int i = 0; i < count; ++i) {
            const int handle = events[static_cast<std::size_t>(i)].data.fd;
            if (handle == m_listener.Handle()) {
                AcceptEquipment();
            } else {
                ReadEquipment(handle);
            }
        }
        return m_equipmentBytes >= bytes;
    };
    return simulation::WaitUntil(drain);
}

}  // namespace bench
