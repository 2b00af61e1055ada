#pragma once

#include "libraries/comm/PortRegistry.h"
#include "simulation/Socket.h"

#include <string>
#include <utility>
#include <vector>

/** A port library with a short time limit, and the common parts of the tests of its network ports. */
struct CommFixture {
    static comm::SCommSettings Settings(std::chrono::milliseconds bound = std::chrono::milliseconds(300)) {
        comm::SCommSettings settings;
        settings.bound = bound;
        settings.retryPause = std::chrono::milliseconds(300);
        return settings;
    }

    explicit CommFixture(const comm::SCommSettings& settings = Settings(),
                         comm::CNameResolver::Ask ask = comm::AskSystem)
        : registry(settings, std::move(ask)) {}

    static SNetPortConfig Client(int port, const std::string& address = "127.0.0.1") {
        return {"device", "", address, 0, port, NetModeTcpClient};
    }
    static SNetPortConfig Server(int port, const std::string& from = "") {
        return {"server", "127.0.0.1", from, port, 0, NetModeTcpServer};
    }
    static SNetPortConfig Udp(int localPort, int port, const std::string& address = "127.0.0.1") {
        return {"udp", "", address, localPort, port, NetModeUdp};
    }

    /** Settings of COM7 that no serial line has. */
    static std::vector<SSerialPortConfig> ImpossibleSettings() {
        return {{"", "COM7", 0},
                {"", "COM7", 9600, 9},
                {"", "COM7", 9600, 8, static_cast<EnParity>(5)},
                {"", "COM7", 9600, 8, ParityNone, StopBitsOneAndHalf},
                {"", "COM7", 9600, 5, ParityNone, StopBitsTwo}};
    }

    int Open(const SNetPortConfig& record) { return registry.OpenNet(record); }
    int Send(const SNetPortConfig& record, const std::string& text) {
        return registry.SendNet(record, text, true, 0);
    }

    comm::CPortRegistry registry;
};

/** Everything that comes from a connection, up to a number of bytes or to its end. */
inline std::string ReceiveUpTo(simulation::Socket& socket, std::size_t count) {
    std::string all;
    for (std::string bytes; all.size() < count && !(bytes = socket.Receive()).empty();) {
        all += bytes;
    }
    return all;
}
