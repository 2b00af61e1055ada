// Starting, failing to start, stopping, and what the process needs while it runs.

#include "simulation/Browser.h"
#include "simulation/Equipment.h"
#include "simulation/Machine.h"

#include <iostream>

#include <gtest/gtest.h>

namespace {

using nlohmann::json;
using namespace simulation;

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

/** Saves network interfaces, as a host finds them at its start. */
void WriteInterfaces(const HostProcess& host, const json& infos) {
    json list = json::array();
    for (const json& info : infos) {
        list.push_back({{"nodeId", list.size() + 1}, {"controlType", "netPortInfo"}, {"netPortInfo", info}});
    }
    WriteFile(host.UserData() / "interFace.json", json{{"configList", list}}.dump());
}

TEST(Start, FailsWithAReasonWhenItsPortIsTaken) {
    HostProcess first;
    first.Start();
    const TcpListener other;
    for (const int port : {first.HttpPort(), other.Port()}) {
        HostProcess second({.httpPort = port});
        second.Launch();
        EXPECT_EQ(second.Process().WaitExit(), 1);
        ExpectSays(second.Process().ErrorOutput(), {std::to_string(port), "taken", "http_port"});
    }
    EXPECT_TRUE(first.WaitServing());
}

TEST(Start, LeavesAFolderAloneThatAnotherServerHas) {
    HostProcess first;
    first.Start();
    ASSERT_TRUE(WaitUntil([&] { return !first.UserFile("Log/Server.log").empty(); }));
    const std::string log = first.UserFile("Log/Server.log");
    HostProcess second({.userData = first.UserData()});
    second.Launch();
    EXPECT_EQ(second.Process().WaitExit(), 1);
    ExpectSays(second.Process().ErrorOutput(), {"another server, process ", first.UserData().string()});
    EXPECT_EQ(second.Process().Output(), "");
    EXPECT_EQ(first.UserFile("Log/Server.log"), log);

    first.Process().Send(EnSignal::Kill);
    EXPECT_NE(first.Process().WaitExit(), std::nullopt);
    second.Start();
    EXPECT_EQ(second.Stop(), 0);
    first.Start();
}

TEST(Start, OneOfTwoThatMeetOnAPortSaysThatItRuns) {
    if (!Differences::kTellsWhoListens) {
        GTEST_SKIP() << "the loser can't know whose port it is";
    }
    const SilentDevice silent;  // keeps both busy between the look at the port and its use
    const int port = FreePort();
    HostProcess hosts[] = {HostProcess({.httpPort = port}), HostProcess({.httpPort = port})};
    for (HostProcess& host : hosts) {
        WriteInterfaces(host, json::array({Browser::NetInfo("Silent", "TCP_Client", 0, silent.Port())}));
        host.Launch();
    }
    ASSERT_TRUE(WaitUntil([&] { return !hosts[0].Process().Running() || !hosts[1].Process().Running(); }));
    HostProcess& ended = hosts[0].Process().Running() ? hosts[1] : hosts[0];
    HostProcess& serving = hosts[0].Process().Running() ? hosts[0] : hosts[1];
    EXPECT_EQ(ended.Process().WaitExit(), 1);
    EXPECT_EQ(ended.Process().Output().find("is running"), std::string::npos);
    ExpectSays(ended.Process().ErrorOutput(), {std::to_string(port)});
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
    for (const char* end : {",\n log_level:\"warn\"}", "}\n and more"}) {
        WriteFile(file, ports + end);
        host.Start();
        EXPECT_EQ(host.Stop(), 0);
        const std::string log = host.UserFile("Log/System.log");
        ExpectSays(log, {file.filename().string() + " has an error", "line 3, column 2", "[Error]",
                         "websocket_port " + std::to_string(host.WebSocketPort()) + ", log_level info"});
        ExpectSays(log.substr(0, log.find(" has an error")), {host.UserData().string()});
    }
}

TEST(Start, GoesOnAndWarnsWithoutALockOrAWebSocketPort) {
    const TcpListener other;
    HostProcess host({.webSocketPort = other.Port()});
    const auto lock = host.UserData() / "Server.lock";
    if (!MakeLink(lock, lock)) {
        std::filesystem::create_directories(lock);
    }
    host.Start();
    ASSERT_TRUE(WaitUntil([&] { return host.Process().Output().find("is running") != std::string::npos; }));
    ExpectSays(host.Process().ErrorOutput(), {host.UserData().string(), "can't be locked: ",
                                              std::to_string(other.Port()), "taken", "websocket_port"});
    EXPECT_EQ(host.Stop(), 0);
    ExpectSays(host.UserFile("Log/System.log"),
               {"can't be locked: ", "The server can't start: port " + std::to_string(other.Port()) + ": "});
}

// A browser must not read half of settings.json, so it is replaced as a whole where that can be done.
TEST(Start, WritesItsPortsForTheBrowser) {
    HostProcess host({.ownInstallation = true});
    const auto root = host.Installation() / "dist";
    const auto settings = root / "settings.json";
    const auto temporary = root / "settings.json.tmp";
    const std::string expected = R"({"http_port":)" + std::to_string(host.HttpPort()) +
                                 R"(,"websocket_port":)" + std::to_string(host.WebSocketPort()) + "}\n";
    const auto start = [&] {
        host.Start();
        EXPECT_EQ(host.Stop(), 0);
    };
    start();
    EXPECT_EQ(ReadFile(settings), expected);
    WriteFile(settings, "old");
    std::filesystem::create_hard_link(settings, host.Home() / "reader");
    start();
    EXPECT_EQ(ReadFile(settings), expected);
    EXPECT_EQ(ReadFile(host.Home() / "reader"), "old") << "not replaced as a whole";
    EXPECT_FALSE(std::filesystem::exists(temporary));

    std::filesystem::create_directory(temporary);  // as if nothing could be created in the folder
    WriteFile(settings, "old");
    start();
    EXPECT_EQ(ReadFile(settings), expected);
    std::filesystem::remove(settings);
    start();
    EXPECT_FALSE(std::filesystem::exists(settings));
    ExpectSays(host.UserFile("Log/System.log"), {"settings.json can't be written"});
    std::filesystem::remove(temporary);
    if (MakeLink(FullDisk(), temporary)) {
        start();
        EXPECT_TRUE(std::filesystem::is_empty(root));
    }
}

TEST(Start, TellsWhichDocumentStoppedIt) {
    for (const auto& [file, content] :
         {std::pair("setting.json", R"({"Language":"x"})"), std::pair("materials.json", "[]"),
          std::pair("interFace.json", "[]")}) {
        HostProcess host;
        WriteFile(host.UserData() / file, content);
        host.Launch();
        EXPECT_EQ(host.Process().WaitExit(), 1) << file;
        ExpectSays(host.Process().ErrorOutput(), {host.UserData().string() + "/" + file, "type_error",
                                                  "Correct the file, or move it away"});
        EXPECT_EQ(host.UserFile(file), content) << "left as it was";
    }
}

TEST(Stop, EndsInTimeWithItsSavesDone) {
    HostProcess host;
    json large = json::array();
    for (int i = 0; i < 100000; ++i) {
        large.push_back("entry " + std::to_string(i));
    }
    for (const auto signal : {EnSignal::Terminate, EnSignal::HangUp}) {
        large.push_back("one more");
        host.Start();
        Browser browser(host);
        ASSERT_EQ(browser.Post("setCentralControlWebLayout", {{"data", large}}).at("code"), 20000);
        host.Process().Send(signal);  // at once, with the channel open and the save under way
        EXPECT_EQ(host.Process().WaitExit(kSanitized ? kMaxTestWait : milliseconds(5000)), 0);
        EXPECT_TRUE(host.UserFile("layout.json") == large.dump(4)) << "another document was saved";
    }
}

TEST(Start, DoesNotWaitForEachUnreachableDevice) {
    const SilentDevice silent;
    HostProcess host;
    json infos = json::array();
    for (int i = 1; i <= 1000; ++i) {
        const bool isSilent = i % 20 == 0;
        infos.push_back(Browser::NetInfo("Device" + std::to_string(i), isSilent ? "TCP_Client" : "UDP", 0,
                                         isSilent ? silent.Port() : i));
        infos.back()["ipAddress"] = isSilent ? "127.0.0." + std::to_string(1 + i / 20) : "";
    }
    WriteInterfaces(host, infos);
    host.Start();  // one after the other they would take 150 s, longer than the start is waited for
    EXPECT_EQ(Browser(host).Get("getConfigList").at("configList").size(), 1000U);
    EXPECT_EQ(host.Stop(), 0);
}

void ExpectResident(HostProcess& host, std::size_t megabytes) {
    if (Differences::kMeasuresProcess) {
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
        std::list<WebSocketClient> channels;
        for (int i = 0; i < 1000; ++i) {
            channels.emplace_back(host.WebSocketPort(), i % 2 == 0 ? "127.0.0.1" : "127.0.0.2");
        }
        for (WebSocketClient& channel : channels) {
            ASSERT_TRUE(channel.Heartbeat());
        }
        std::cout << "with 1,000 channels: " << host.Process().ResidentBytes() / kMegabyte << " MB\n";
        ExpectResident(host, 60);
    }
    EXPECT_TRUE(WaitUntil([&] { return host.Process().Descriptors() <= descriptors + 2; }))
        << descriptors << " descriptors before, now " << host.Process().Descriptors();
}

}  // namespace
