// Starting, failing to start, stopping, and what the process needs while it runs.

#include "simulation/Browser.h"
#include "simulation/Equipment.h"
#include "simulation/Machine.h"

#include <iostream>

#include <gtest/gtest.h>

namespace {

using nlohmann::json;
using simulation::Browser;
using simulation::HostOptions;
using simulation::HostProcess;
using simulation::HttpClient;
using simulation::milliseconds;

constexpr std::size_t kMegabyte = 1000000;

#ifdef TEST_SANITIZED
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

void ExpectSays(const std::string& text, const std::vector<std::string>& parts) {
    for (const std::string& part : parts) {
        EXPECT_NE(text.find(part), std::string::npos) << "'" << part << "' is missing in: " << text;
    }
}

TEST(Start, FailsWithAReasonWhenItsPortIsTaken) {
    HostProcess first;
    first.Start();
    HostOptions options;
    options.httpPort = first.HttpPort();
    HostProcess second(options);
    second.Launch();
    EXPECT_EQ(second.Process().WaitExit(), 1);
    ExpectSays(second.Process().ErrorOutput(), {std::to_string(first.HttpPort()), "taken", "http_port"});
    EXPECT_EQ(HttpClient(first.HttpPort()).Get("/api/centralControl/getConfigList").status, 200);

    const simulation::TcpListener other;
    options.httpPort = other.Port();
    HostProcess third(options);
    third.Launch();
    EXPECT_EQ(third.Process().WaitExit(), 1);
    ExpectSays(third.Process().ErrorOutput(), {std::to_string(other.Port()), "taken", "http_port"});
}

TEST(Start, LeavesAFolderAloneThatAnotherServerHas) {
    HostProcess first;
    first.Start();
    ASSERT_TRUE(simulation::WaitUntil([&] { return !first.UserFile("Log/Server.log").empty(); }));
    const std::string log = first.UserFile("Log/Server.log");
    HostOptions options;
    options.userData = first.UserData();
    HostProcess second(options);
    second.Launch();
    EXPECT_EQ(second.Process().WaitExit(), 1);
    ExpectSays(second.Process().ErrorOutput(), {"another server, process ", first.UserData().string()});
    EXPECT_EQ(second.Process().Output(), "");
    EXPECT_EQ(first.UserFile("Log/Server.log"), log);

    first.Process().Send(simulation::EnSignal::Kill);
    EXPECT_NE(first.Process().WaitExit(), std::nullopt);
    second.Start();
    EXPECT_EQ(second.Stop(), 0);
    first.Start();
}

TEST(Start, OneOfTwoThatMeetOnAPortSaysThatItRuns) {
    if (!simulation::Differences::kTellsWhoListens) {
        GTEST_SKIP() << "the loser can't know whose port it is";
    }
    const simulation::SilentDevice silent;  // keeps both busy between the look at the port and its use
    json info = Browser::NetInfo("Silent", "TCP_Client", 0, silent.Port());
    const json interfaces = {
        {"configList", {{{"nodeId", 1}, {"controlType", "netPortInfo"}, {"netPortInfo", info}}}}};
    HostOptions options;
    options.httpPort = HostProcess().HttpPort();
    HostProcess hosts[] = {HostProcess(options), HostProcess(options)};
    for (HostProcess& host : hosts) {
        simulation::WriteFile(host.UserData() / "interFace.json", interfaces.dump());
        host.Launch();
    }
    ASSERT_TRUE(simulation::WaitUntil(
        [&] { return !hosts[0].Process().Running() || !hosts[1].Process().Running(); }));
    HostProcess& ended = hosts[0].Process().Running() ? hosts[1] : hosts[0];
    HostProcess& serving = hosts[0].Process().Running() ? hosts[0] : hosts[1];
    EXPECT_EQ(ended.Process().WaitExit(), 1);
    EXPECT_EQ(ended.Process().Output().find("is running"), std::string::npos);
    ExpectSays(ended.Process().ErrorOutput(), {std::to_string(options.httpPort)});
    // The other one may have the port, or be about to get it, when the loser looks who has it.
    const std::string told = ended.Process().ErrorOutput() + ended.UserFile("Log/System.log");
    EXPECT_TRUE(told.find(" is taken by ") != std::string::npos ||
                told.find("already in use") != std::string::npos)
        << told;
    EXPECT_TRUE(serving.WaitServing());
    EXPECT_EQ(serving.Stop(), 0);
}

TEST(Start, TellsWhereItsConfigurationIsWrong) {
    HostProcess host;
    const auto file = host.UserData() / "LocalHost.config";
    const std::string ports = "{\"http_port\":" + std::to_string(host.HttpPort()) +
                              ",\n \"websocket_port\":" + std::to_string(host.WebSocketPort());
    for (const auto& [end, place] : {std::pair(",\n log_level:\"warn\"}", "line 3, column 2"),
                                     std::pair("}\n and more", "line 3, column 2")}) {
        simulation::WriteFile(file, ports + end);
        host.Start();
        EXPECT_EQ(host.Stop(), 0);
        const std::string log = host.UserFile("Log/System.log");
        ExpectSays(log, {file.filename().string() + " has an error", place, "[Error]",
                         "websocket_port " + std::to_string(host.WebSocketPort()) + ", log_level info"});
        ExpectSays(log.substr(0, log.find(" has an error")), {host.UserData().string()});
    }
}

TEST(Start, GoesOnWithAFolderThatCantBeLocked) {
    HostProcess host;
    const auto lock = host.UserData() / "Server.lock";
    if (!simulation::MakeLink(lock, lock)) {
        std::filesystem::create_directories(lock);
    }
    host.Start();
    ASSERT_TRUE(simulation::WaitUntil([&] { return !host.Process().ErrorOutput().empty(); }));
    ExpectSays(host.Process().ErrorOutput(), {host.UserData().string(), "can't be locked: "});
    EXPECT_EQ(host.Stop(), 0);
    ExpectSays(host.UserFile("Log/System.log"), {"can't be locked: "});
}

TEST(Start, WarnsWhenTheWebSocketPortIsTaken) {
    const simulation::TcpListener other;
    HostOptions options;
    options.webSocketPort = other.Port();
    HostProcess host(options);
    host.Start();
    ASSERT_TRUE(simulation::WaitUntil([&] { return !host.Process().ErrorOutput().empty(); }));
    ExpectSays(host.Process().ErrorOutput(), {std::to_string(other.Port()), "taken", "websocket_port"});
    EXPECT_EQ(host.Stop(), 0);
    ExpectSays(host.UserFile("Log/System.log"),
               {"The server can't start: port " + std::to_string(other.Port()) + ": "});
}

TEST(Start, TellsWhichDocumentStoppedIt) {
    const std::vector<std::pair<const char*, const char*>> table = {{"setting.json", "[1]"},
                                                                    {"setting.json", R"({"Language":"x"})"},
                                                                    {"materials.json", "[]"},
                                                                    {"interFace.json", "[]"}};
    for (const auto& [file, content] : table) {
        HostProcess host;
        simulation::WriteFile(host.UserData() / file, content);
        host.Launch();
        EXPECT_EQ(host.Process().WaitExit(), 1) << file << content;
        const std::string path = host.UserData().string() + "/" + file;
        ExpectSays(host.Process().ErrorOutput(), {path, "type_error", "Correct the file, or move it away"});
        EXPECT_EQ(host.UserFile(file), content) << "left as it was";
    }
}

TEST(Stop, EndsInTimeWithItsSavesDone) {
    HostProcess host;
    json large = json::array();
    for (int i = 0; i < 100000; ++i) {
        large.push_back("entry " + std::to_string(i));
    }
    for (const auto signal : {simulation::EnSignal::Terminate, simulation::EnSignal::HangUp}) {
        large.push_back("one more");
        host.Start();
        Browser browser(host);
        ASSERT_EQ(browser.Post("setCentralControlWebLayout", {{"data", large}}).at("code"), 20000);
        host.Process().Send(signal);  // at once, with the channel open and the save under way
        EXPECT_EQ(host.Process().WaitExit(kSanitized ? simulation::kMaxTestWait : milliseconds(5000)), 0);
        EXPECT_EQ(host.UserFile("layout.json"), large.dump(4));
    }
}

TEST(Start, DoesNotWaitForEachUnreachableDevice) {
    const simulation::SilentDevice silent;
    HostProcess host;
    json list = json::array();
    for (int id = 1; id <= 1000; ++id) {
        const bool isSilent = id % 20 == 0;
        json info = Browser::NetInfo("Device" + std::to_string(id), isSilent ? "TCP_Client" : "UDP", 0,
                                     isSilent ? silent.Port() : id);
        info["ipAddress"] = isSilent ? "127.0.0." + std::to_string(1 + id / 20) : "";
        list.push_back({{"nodeId", id}, {"controlType", "netPortInfo"}, {"netPortInfo", info}});
    }
    simulation::WriteFile(host.UserData() / "interFace.json", json{{"configList", list}}.dump());
    const auto begin = std::chrono::steady_clock::now();
    host.Start();  // one after the other they would take 150 s
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
    std::cout << "serving after " << time.count() << " s\n";
    Browser browser(host);
    EXPECT_EQ(browser.Get("getConfigList").at("configList").size(), 1000U);
    EXPECT_EQ(host.Stop(), 0);
}

void ExpectResident(HostProcess& host, std::size_t megabytes) {
    if (simulation::Differences::kMeasuresProcess) {
        EXPECT_LT(host.Process().ResidentBytes(), megabytes * kMegabyte);
    }
}

TEST(Memory, StaysSmallIdleAndWithAThousandChannels) {
    if (kSanitized) {
        GTEST_SKIP() << "a sanitizer has a memory of its own";
    }
    HostProcess host;
    host.Start();
    ExpectResident(host, 20);
    const std::size_t descriptors = host.Process().Descriptors();
    {
        std::list<simulation::WebSocketClient> channels;
        for (int i = 0; i < 1000; ++i) {
            channels.emplace_back(host.WebSocketPort(), i % 2 == 0 ? "127.0.0.1" : "127.0.0.2");
        }
        for (simulation::WebSocketClient& channel : channels) {
            ASSERT_TRUE(channel.Heartbeat());
        }
        std::cout << "with 1,000 channels: " << host.Process().ResidentBytes() / kMegabyte << " MB\n";
        ExpectResident(host, 60);
    }
    EXPECT_TRUE(simulation::WaitUntil([&] { return host.Process().Descriptors() <= descriptors + 2; }))
        << descriptors << " descriptors before, now " << host.Process().Descriptors();
}

}  // namespace
