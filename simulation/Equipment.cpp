#include "simulation/Equipment.h"

namespace simulation {

namespace {

/** How long a device waits for something to happen before it looks whether its test is over. */
constexpr milliseconds kDeviceTick{5};

}  // namespace

void Recorder::Add(std::string_view bytes) {
    const std::lock_guard lock(m_mutex);
    m_bytes += bytes;
}

std::string Recorder::Bytes() const {
    const std::lock_guard lock(m_mutex);
    return m_bytes;
}

std::string Recorder::WaitBytes(std::size_t count) const {
    WaitUntil([&] { return Bytes().size() >= count; });
    return Bytes();
}

TcpListener::TcpListener(EnDeviceMode mode)
    : m_mode(mode),
      m_listener(Socket::Listen()),
      m_port(m_listener.LocalPort()),
      m_thread([this](const std::stop_token& stop) { Run(stop); }) {}

TcpListener::~TcpListener() {
    m_thread.request_stop();
    m_thread.join();
}

void TcpListener::Run(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
        if (m_listener.WaitReadable(kDeviceTick)) {
            Socket connection = m_listener.Accept();
            if (m_mode == EnDeviceMode::Reset) {
                connection.Reset();
            } else if (m_mode != EnDeviceMode::Hangup) {
                const std::lock_guard lock(m_mutex);
                m_connections.push_back(std::move(connection));
            }
            ++m_accepted;
        }
        if (m_mode == EnDeviceMode::Record) {
            ReadAll();
        }
    }
}

void TcpListener::ReadAll() {
    const std::lock_guard lock(m_mutex);
    m_connections.remove_if([this](Socket& connection) {
        while (connection.WaitReadable(milliseconds(0))) {
            const std::string bytes = connection.Receive();
            if (bytes.empty()) {
                return true;
            }
            m_received.Add(bytes);
        }
        return false;
    });
}

void TcpListener::DropConnections(bool reset) {
    const std::lock_guard lock(m_mutex);
    for (Socket& connection : m_connections) {
        if (reset) {
            connection.Reset();
        }
    }
    m_connections.clear();
}

UdpListener::UdpListener() : m_socket(Socket::Udp()), m_port(m_socket.LocalPort()) {
    m_thread = std::jthread([this](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            if (m_socket.WaitReadable(kDeviceTick)) {
                m_received.Add(m_socket.Receive());
            }
        }
    });
}

SilentDevice::SilentDevice() : m_listener(Socket::Listen(0, 0)) {
    do {  // the queue of the listener takes a connection or two before the system lets attempts hang
        m_fillers.push_back(Socket::Connect(Port(), "127.0.0.1", true));
    } while (m_fillers.back().WaitConnected(milliseconds(100)));
}

void SilentDevice::Wake() {
    m_fillers.pop_back();  // the one that hangs
    for (; !m_fillers.empty(); m_fillers.pop_back()) {
        m_listener.Accept();
    }
}

}  // namespace simulation
