// Input that no browser sends: the host answers or closes, and lives on.

#include "tests/integration/Served.h"

#include <random>

#include <gtest/gtest.h>

namespace {

using nlohmann::json;
using namespace simulation;
using Hostile = Served;

const std::string kSetter = "/api/centralControl/setCentralControlWebLayout";

/** Sends bytes, ends the sending half, and waits for the host to close. */
void Throw(int port, const std::string& bytes) {
    Socket socket = Socket::Connect(port);
    try {
        socket.Send(bytes);
        socket.ShutdownSend();
        while (!socket.Receive().empty()) {
        }
    } catch (const std::system_error&) {  // the host has closed already, as it may
    }
}

TEST_F(Hostile, RandomBytesAndBrokenOffRequests) {
    ASSERT_EQ(browser.Post("setCentralControlWebLayout", {{"data", "kept"}}).at("code"), 20000);
    const std::string request = HttpClient::Request("POST", kSetter, R"({"data":"changed"})");
    const std::string upgrade =
        "GET / HTTP/1.1\r\nHost: h\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
        "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n";
    std::mt19937 random(20241121);  // a fixed seed: each run sends the same bytes
    std::size_t descriptors = 0;
    for (int round = 0; round < 100; ++round) {
        std::string noise(random() % 3000, ' ');
        for (char& byte : noise) {
            byte = static_cast<char>(random());
        }
        const std::string starts[] = {"", request.substr(0, random() % request.size()), upgrade,
                                      upgrade.substr(0, random() % upgrade.size())};
        const std::string& start = starts[random() % std::size(starts)];
        Throw(random() % 2 == 0 ? host.HttpPort() : host.WebSocketPort(), start + noise);
        Throw(host.HttpPort(), request.substr(0, random() % request.size()));
        if (round == 10) {
            descriptors = host.Process().Descriptors();
        }
    }
    EXPECT_TRUE(WebSocketClient(host.WebSocketPort()).Heartbeat());
    EXPECT_EQ(browser.Get("getPageLayoutInfo"), "kept");
    EXPECT_TRUE(WaitUntil([&] { return host.Process().Descriptors() <= descriptors + 3; }))
        << "descriptors are given back";
}

TEST_F(Hostile, JsonThatNobodyWouldWrite) {
    std::string manyKeys = "{\"data\":{\"k\":0";
    for (int i = 0; i < 112000; ++i) {
        manyKeys += ",\"k" + std::to_string(i) + "\":0";
    }
    const auto repeat = [](const std::string& text, int count) {
        std::string result;
        for (int i = 0; i < count; ++i) {
            result += text;
        }
        return result;
    };
    const struct {
        const char* name;
        const char* route;
        std::string body;
        int code;
    } rows[] = {
        {"arrays 100,000 deep", "setMaterialList",
         "{\"data\":" + repeat("[", 100000) + repeat("]", 100000) + "}", 30101},
        {"objects 100,000 deep", "setMaterialList", repeat("{\"data\":", 100000), 30101},
        {"unclosed 100,000 deep", "useComponent", repeat("[", 100000), 30101},
        {"200 deep", "setMaterialList", "{\"data\":" + repeat("[", 200) + repeat("]", 200) + "}", 20000},
        {"112,000 keys", "setMaterialList", manyKeys + "}}", 20000},
        {"bytes of a NUL", "useComponent", std::string("\0\0\0", 3), 30101},
        {"address of 100,000 characters", "addNetPortInfo",
         R"({"data":{"info":{"netPortName":"n","netMode":"UDP","ipAddress":")" + repeat("1.", 50000) +
             R"(","dstIpAddress":"","port":0,"dstPort":0}}})",
         30301},
    };
    for (const auto& row : rows) {
        const auto reply = browser.Http().Post(std::string("/api/centralControl/") + row.route, row.body);
        EXPECT_TRUE(reply.body.starts_with(R"({"code":)" + std::to_string(row.code)))
            << row.name << reply.body;
    }
    EXPECT_TRUE(WebSocketClient(host.WebSocketPort()).Heartbeat());
}

}  // namespace
