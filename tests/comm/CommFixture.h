#pragma once

#include "libraries/comm/PortRegistry.h"
#include "simulation/Socket.h"

#include <algorithm>
#include <future>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

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

    int Open(const SNetPortConfig& record) { return registry.OpenNet(record); }
    int Send(const SNetPortConfig& record, const std::string& text) {
        return registry.SendNet(record, text, true, 0);
    }
    std::future<int> SendLater(const SNetPortConfig& record, const std::string& text) {
        return std::async(std::launch::async, [this, record, text] { return Send(record, text); });
    }

    comm::CPortRegistry registry;
};

inline bool IsReady(const std::future<int>& call) {
    return call.wait_for(std::chrono::milliseconds(0)) == std::future_status::ready;
}

/** Of sends to a device that does not answer, one waits for the whole bound, and the others for less. */
inline void ExpectOneToWait(std::vector<std::future<int>>& sends, std::chrono::milliseconds bound) {
    const auto waiting = [&] { return sends.end() - std::partition(sends.begin(), sends.end(), IsReady); };
    EXPECT_TRUE(simulation::WaitUntil([&] { return waiting() <= 1; }, bound / 2));
    EXPECT_EQ(waiting(), 1);
    for (auto& send : sends) {
        EXPECT_EQ(send.get(), 10060);
    }
}

/** Everything that comes from a connection, up to a number of bytes or to its end. */
inline std::string ReceiveUpTo(simulation::Socket& socket, std::size_t count) {
    std::string all;
    for (std::string bytes; all.size() < count && !(bytes = socket.Receive()).empty();) {
        all += bytes;
    }
    return all;
}
