// Input that no browser sends: the host answers or closes, and lives on.

#include "simulation/Browser.h"
#include "simulation/Equipment.h"

#include <list>
#include <random>
#include <thread>

#include <gtest/gtest.h>

namespace {

using nlohmann::json;
using simulation::Browser;
using simulation::HostProcess;
using simulation::HttpClient;
using simulation::milliseconds;
using simulation::Socket;

const std::string kSetter = "/api/centralControl/setCentralControlWebLayout";

void ExpectAlive(HostProcess& host) {
    ASSERT_TRUE(host.Process().Running()) << host.Process().ErrorOutput();
    EXPECT_EQ(HttpClient(host.HttpPort()).Get("/api/centralControl/getConfigList").status, 200);
    EXPECT_TRUE(simulation::WebSocketClient(host.WebSocketPort()).Heartbeat());
}

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

TEST(Hostile, RandomBytesAndBrokenOffRequests) {
    HostProcess host;
    host.Start();
    Browser browser(host);
    ASSERT_EQ(browser.Post("setCentralControlWebLayout", {{"data", "kept"}}).at("code"), 20000);
    const std::string request = HttpClient::Request("POST", kSetter, R"({"data":"changed"})");
    const std::string upgrade =
        "GET / HTTP/1.1\r\nHost: h\r\nUpgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: "
        "13\r\n"
        "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n";
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
    ExpectAlive(host);
    EXPECT_EQ(browser.Get("getPageLayoutInfo"), "kept");
    EXPECT_TRUE(simulation::WaitUntil([&] { return host.Process().Descriptors() <= descriptors + 3; }))
        << "descriptors are given back";
    EXPECT_EQ(host.Stop(), 0) << host.Process().ErrorOutput();
}

TEST(Hostile, JsonThatNobodyWouldWrite) {
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
    const std::string click = R"({"data":{"componentId":)";
    const std::string interactions = R"(,"interactionArr":[{"triggerType":"t"}]}})";
    struct Row {
        const char* name;
        const char* route;
        std::string body;
        int code;
    };
    const std::vector<Row> table = {
        {"arrays 100,000 deep", "setMaterialList",
         "{\"data\":" + repeat("[", 100000) + repeat("]", 100000) + "}", 30101},
        {"objects 100,000 deep", "setMaterialList", repeat("{\"data\":", 100000), 30101},
        {"unclosed 100,000 deep", "useComponent", repeat("[", 100000), 30101},
        {"200 deep", "setMaterialList", "{\"data\":" + repeat("[", 200) + repeat("]", 200) + "}", 20000},
        {"112,000 keys", "setMaterialList", manyKeys + "}}", 20000},
        {"NUL in a text", "setMaterialList", R"({"data":"\u0000"})", 20000},
        {"component too wide", "useComponent", click + "4294967297" + interactions, 30203},
        {"component negative", "useComponent", click + "-1" + interactions, 30203},
        {"component a huge float", "useComponent", click + "1e300" + interactions, 30203},
        {"component 2^64", "useComponent", click + "18446744073709551616" + interactions, 30203},
        {"bytes of a NUL", "useComponent", std::string("\0\0\0", 3), 30101},
        {"port too wide", "addNetPortInfo",
         R"({"data":{"info":{"netPortName":"n","netMode":"TCP_Client","ipAddress":"","dstIpAddress":"127.0.0.1","port":1e300,"dstPort":-1}}})",
         30302},
        {"address of 100,000 characters", "addNetPortInfo",
         R"({"data":{"info":{"netPortName":"n","netMode":"UDP","ipAddress":")" + repeat("1.", 50000) +
             R"(","dstIpAddress":"","port":0,"dstPort":0}}})",
         30301},
    };
    HostProcess host;
    host.Start();
    Browser browser(host);
    for (const Row& row : table) {
        const auto reply = browser.Http().Post(std::string("/api/centralControl/") + row.route, row.body);
        EXPECT_EQ(json::parse(reply.body).at("code"), row.code) << row.name;
    }
    ExpectAlive(host);
    EXPECT_EQ(host.Stop(), 0) << host.Process().ErrorOutput();
}

TEST(Hostile, FourClientsSaveOneDocumentAtOnce) {
    HostProcess host;
    host.Start();
    {
        const Browser channel(host);
        std::list<std::jthread> threads;
        for (int client = 0; client < 4; ++client) {
            threads.emplace_back([&host, client] {
                HttpClient http(host.HttpPort());
                for (int i = 0; i < 50; ++i) {
                    const json body = {
                        {"data", {{"client", client}, {"text", std::string(20000, 'a')}, {"i", i}}}};
                    EXPECT_EQ(json::parse(http.Post(kSetter, body.dump()).body).at("code"), 20000);
                }
            });
        }
    }
    const json last =
        json::parse(HttpClient(host.HttpPort()).Get("/api/centralControl/getPageLayoutInfo").body);
    EXPECT_EQ(host.Stop(), 0);
    EXPECT_EQ(host.UserFile("layout.json"), last.at("data").dump(4)) << "the file holds what the memory held";
}

}  // namespace
