#include "demo/Devices.h"

#include <algorithm>
#include <chrono>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace demo {

namespace {

using simulation::milliseconds;

/** How long a device waits for something to happen before it looks whether the demonstration is over. */
constexpr milliseconds kTick{10};
constexpr std::size_t kFrameSize = 4;

constexpr std::chrono::seconds kChangeOfPower{10};

std::string Shown(const std::string& bytes) {
    std::ostringstream hex;
    std::string text;
    for (const char byte : bytes) {
        hex << std::hex << std::uppercase << std::setw(2) << std::setfill('0')
            << (static_cast<unsigned>(byte) & 0xff) << ' ';
        text += byte < ' ' || byte > '~' ? '.' : byte;
    }
    return hex.str() + ' ' + text;
}

/** One line for each message, written at once so that devices don't mix. */
void Print(const std::string& name, const std::string& got, const std::string& answer) {
    std::ostringstream line;
    line << std::left << std::setw(12) << name << "got       " << Shown(got) << '\n'
         << std::setw(12) << ""
         << "answered  " << Shown(answer) << '\n';
    std::cout << line.str() << std::flush;
}

}  // namespace

char Projector::Power() const {
    const bool isSettled = Clock::now() >= m_settled;
    return m_isOn ? (isSettled ? '1' : '3') : (isSettled ? '0' : '2');
}

std::string Projector::SetPower(bool on) {
    if (Clock::now() < m_settled) {
        return m_isOn == on ? "OK" : "ERR3";  // not at this time
    }
    if (m_isOn != on) {
        m_isOn = on;
        m_settled = Clock::now() + kChangeOfPower;
    }
    return "OK";
}

std::string Projector::SetInput(const std::string& input) {
    if (input != "11" && input != "31" && input != "32") {
        return "ERR2";  // there is no such input
    }
    if (Power() != '1') {
        return "ERR3";
    }
    m_input = input;
    return "OK";
}

std::string Projector::Answer(const std::string& line) {
    const std::size_t end = line.size() - 1;
    const std::size_t blank = std::min(line.find(' '), end);
    const std::string command = line.substr(0, blank);
    const std::string value = line.substr(std::min(blank + 1, end), end - std::min(blank + 1, end));
    std::string result = "ERR1";  // an unknown command
    if (command == "%1POWR") {
        result = value == "?"                   ? std::string(1, Power())
                 : value == "0" || value == "1" ? SetPower(value == "1")
                                                : "ERR2";
    } else if (command == "%1INPT") {
        result = value != "?" ? SetInput(value) : Power() == '1' ? m_input : "ERR3";
    } else if (command == "%1LAMP" && value == "?") {
        result = "1280 " + std::string(Power() == '0' ? "0" : "1");  // hours, and whether it is lit
    }
    return command + '=' + result + '\r';
}

std::string MatrixAnswer(const std::string& line) {
    const std::string command = line.substr(0, line.size() - 1);
    const bool isKnown = command.starts_with("ROUTE ") || command.starts_with("VOL ");
    return isKnown ? command + " OK\r" : "ERROR\r";
}

std::string RelayAnswer(const std::string& frame) {
    const auto byte = [&](std::size_t at) { return static_cast<unsigned>(frame[at]) & 0xff; };
    const bool isWhole = byte(0) == 0xa0 && ((byte(0) + byte(1) + byte(2)) & 0xff) == byte(3);
    return isWhole ? frame : std::string(kFrameSize, '\xff');
}

TcpDevice::TcpDevice(std::string name, Answer answer)
    : m_name(std::move(name)),
      m_answer(std::move(answer)),
      m_listener(simulation::Socket::Listen()),
      m_port(m_listener->LocalPort()),
      m_thread([this](const std::stop_token& stop) { Run(stop); }) {}

TcpDevice::~TcpDevice() {
    m_thread.request_stop();
    m_thread.join();
}

void TcpDevice::Run(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
        FollowPlug();
        if (!m_listener) {
            std::this_thread::sleep_for(kTick);
        } else if (m_listener->WaitReadable(kTick)) {
            m_connections.push_back({m_listener->Accept(), {}});
        }
        m_connections.remove_if([this](Connection& connection) { return !Read(connection); });
    }
}

void TcpDevice::FollowPlug() {
    if (m_listener.has_value() == m_isPlugged) {
        return;
    }
    if (m_isPlugged) {
        m_listener = simulation::Socket::Listen(m_port);
    } else {
        m_listener.reset();
        m_connections.clear();
    }
    std::cout << m_name + (m_isPlugged ? " is plugged in again.\n" : " is unplugged.\n") << std::flush;
}

bool TcpDevice::Read(Connection& connection) const {
    if (!connection.socket.WaitReadable(milliseconds(0))) {
        return true;
    }
    const std::string bytes = connection.socket.Receive();
    connection.pending += bytes;
    for (std::size_t end = 0; (end = connection.pending.find('\r')) != std::string::npos;) {
        const std::string line = connection.pending.substr(0, end + 1);
        connection.pending.erase(0, end + 1);
        const std::string answer = m_answer(line);
        if (!line.ends_with("?\r")) {
            Print(m_name, line, answer);
        }
        connection.socket.Send(answer);
    }
    return !bytes.empty();
}

SerialDevice::SerialDevice(std::string name, Answer answer, const std::filesystem::path& link)
    : m_name(std::move(name)),
      m_answer(std::move(answer)),
      m_line(link),
      m_thread([this](const std::stop_token& stop) { Run(stop); }) {}

SerialDevice::~SerialDevice() {
    m_thread.request_stop();
    m_thread.join();
}

void SerialDevice::Run(const std::stop_token& stop) const {
    for (std::size_t done = 0; !stop.stop_requested();) {
        const std::string bytes = m_line.Received().Bytes();
        if (bytes.size() < done + kFrameSize) {
            std::this_thread::sleep_for(kTick);
            continue;
        }
        const std::string frame = bytes.substr(done, kFrameSize);
        done += kFrameSize;
        const std::string answer = m_answer(frame);
        Print(m_name, frame, answer);
        m_line.Send(answer);
    }
}

}  // namespace demo
