// Interfaces and clicks, with equipment at the other end.

#include "simulation/Browser.h"
#include "simulation/Equipment.h"
#include "simulation/Machine.h"
#include "simulation/PtyPair.h"

#include <algorithm>
#include <optional>

#include <gtest/gtest.h>

namespace {

using nlohmann::json;
using simulation::Browser;
using simulation::Command;
using simulation::HostProcess;
using simulation::HttpClient;
using simulation::milliseconds;

void UseSerialLine(const HostProcess& host, const std::filesystem::path& device) {
    simulation::WriteFile(host.UserData() / "SerialPorts.json", json{{"COM7", device.string()}}.dump());
}

json NameList(Browser& browser) {
    json names = json::array();
    const json document = browser.Get("getConfigList");
    for (const json& entry : document.at("configList")) {
        names.push_back(entry.at(entry.at("controlType").get<std::string>()).at("comName"));
    }
    return names;
}

json Info(const json& info) {
    return {{"data", {{"info", info}}}};
}

json Edit(int nodeId, const json& info) {
    return {{"data", {{"nodeId", nodeId}, {"info", info}}}};
}

TEST(Interfaces, AreTriedFirstAndStoredInOrder) {
    HostProcess host;
    const simulation::PtyPair line(host.Home() / "line");
    UseSerialLine(host, line.Device());
    const simulation::TcpListener device;
    const simulation::TcpListener other;
    const int closed = simulation::FreePort();
    host.Start();
    Browser browser(host);

    const auto net = [](const char* name, const char* mode, int local, int remote) {
        return Browser::NetInfo(name, mode, local, remote);
    };
    json elsewhere = net("Elsewhere", "UDP", 0, 9);
    elsewhere["ipAddress"] = "203.0.113.1";  // RFC 5737: an address that no machine has
    const json serial = {{"comName", "Line"}, {"comPort", "com7"}, {"baudRate", 9600},
                         {"wordLength", 8},   {"parity", "None"},  {"stopBits", 1}};
    json noPort = serial;
    noPort.update({{"comName", "NoPort"}, {"comPort", "COM99"}});

    struct Step {
        const char* name;
        const char* route;
        json body;
        int code;
        json names;
    };
    const json one = {"A"};
    const json three = {"A", "B", "Line"};
    const std::vector<Step> steps = {
        {"no info", "addNetPortInfo", {{"data", json::object()}}, 30101, json::array()},
        {"add", "addNetPortInfo", Info(net("A", "TCP_Client", 0, device.Port())), 20000, one},
        {"name taken", "addNetPortInfo", Info(net("A", "UDP", 0, 9)), 30304, one},
        {"same end points", "addNetPortInfo", Info(net("B", "TCP_Client", 0, device.Port())), 30306, one},
        {"refused", "addNetPortInfo", Info(net("B", "TCP_Client", 0, closed)), 30302, one},
        {"port taken", "addNetPortInfo", Info(net("B", "TCP_Server", device.Port(), 0)), 30303, one},
        {"no such address", "addNetPortInfo", Info(elsewhere), 30301, one},
        {"no such line", "addComInfo", Info(noPort), 30300, one},
        {"add UDP", "addNetPortInfo", Info(net("B", "UDP", 0, 9)), 20000, {"A", "B"}},
        {"add serial", "addComInfo", Info(serial), 20000, three},
        {"serial name for a net port", "addNetPortInfo", Info(net("Line", "UDP", 0, 10)), 30304, three},
        {"edit to a dead port", "editNetPortInfo", Edit(2, net("A", "TCP_Client", 0, closed)), 30302, three},
        {"edit to another's", "editNetPortInfo", Edit(2, net("A", "UDP", 0, 9)), 30306, three},
        {"rename moves to the end",
         "editNetPortInfo",
         Edit(2, net("C", "TCP_Client", 0, device.Port())),
         20000,
         {"B", "Line", "C"}},
        {"new end points",
         "editNetPortInfo",
         Edit(2, net("C", "TCP_Client", 0, other.Port())),
         20000,
         {"B", "Line", "C"}},
    };
    for (const Step& step : steps) {
        EXPECT_EQ(browser.Post(step.route, step.body).dump(),
                  R"({"code":)" + std::to_string(step.code) + R"(,"message":""})")
            << step.name;
        EXPECT_EQ(NameList(browser), step.names) << step.name;
    }
    ASSERT_EQ(browser.NodeId("C"), 2);  // the add that had no info has used up id 1
    EXPECT_TRUE(simulation::WaitUntil([&] { return other.Accepted() == 1; }));
    EXPECT_EQ(browser.Post("deleteInterfaceConfig", {{"nodeId", browser.NodeId("B")}}).at("code"), 20000);
    const json document = browser.Get("getConfigList");
    EXPECT_EQ(host.Stop(), 0);
    EXPECT_EQ(host.UserFile("interFace.json"), document.dump(4));
    EXPECT_EQ(document.at("configList").at(0).at("comInfo").at("comPort"), "COM7");
    host.Start();
    Browser again(host);
    EXPECT_EQ(NameList(again), json({"Line", "C"}));
    EXPECT_TRUE(simulation::WaitUntil([&] { return other.Accepted() == 2; })) << "opened again at the start";
    EXPECT_EQ(again.Post("deleteAllInterfaceConfig", json()).at("code"), 20000);
    EXPECT_EQ(NameList(again), json::array());
    EXPECT_EQ(host.Stop(), 0);
}

TEST(Interfaces, OnSerialPortsAreMadeFromTheListOfPorts) {
    if (!simulation::Differences::kHasPortList) {
        GTEST_SKIP() << "the system's list of ports can't be filled";
    }
    HostProcess host;
    std::optional<simulation::PtyPair> line(host.Home() / "line");
    UseSerialLine(host, line->Device());
    host.Start();
    Browser browser(host);
    const auto names = [&browser] {  // this machine may have ports of its own
        return json::parse(browser.Http().Get("/api/getServerComList").body).at("data").at("comList");
    };
    const json listed = names();
    const json port = {{"comPort", "COM7"}};
    ASSERT_EQ(std::count(listed.begin(), listed.end(), port), 1) << listed;
    ASSERT_EQ(browser.AddSerial("Screen", "COM7"), 20000);
    ASSERT_EQ(browser.Store({{1, "click", browser.NodeId("Screen"), false, "On", "on", 0}}), 20000);
    EXPECT_EQ(browser.Click(1).at("code"), 20000);
    EXPECT_EQ(line->Received().WaitBytes(2), "on");
    EXPECT_EQ(names(), listed) << "in use";
    line.reset();
    const json unplugged = names();
    EXPECT_EQ(std::count(unplugged.begin(), unplugged.end(), port), 0) << unplugged;
    EXPECT_EQ(host.Stop(), 0);
    EXPECT_NE(
        host.UserFile("Log/Operation.log").find("[SerialComs Count " + std::to_string(listed.size()) + "]"),
        std::string::npos);
}

/** The number of a failure and the system's text for it. */
std::string Reason(unsigned code) {
    return std::to_string(code) + simulation::ErrorText(code);
}

const std::string kRefused = Reason(10061);
const std::string kTooLong = Reason(10040);
const std::string kNoFile = Reason(2);

TEST(Click, TellsEachFailedCommandAndSendsTheOthers) {
    HostProcess host;
    auto device = std::make_unique<simulation::TcpListener>();
    const simulation::TcpListener live;
    const simulation::UdpListener udp;
    auto line = std::make_unique<simulation::PtyPair>(host.Home() / "line");
    UseSerialLine(host, line->Device());
    host.Start();
    Browser browser(host);
    ASSERT_EQ(browser.AddNet("Projector", "TCP_Client", 0, device->Port()), 20000);
    ASSERT_EQ(browser.AddNet("Live", "TCP_Client", 0, live.Port()), 20000);
    ASSERT_EQ(browser.AddNet("Lights", "UDP", 0, udp.Port()), 20000);
    ASSERT_EQ(browser.AddSerial("Screen", "COM7"), 20000);
    device.reset();  // switched off
    line.reset();    // unplugged
    const int projector = browser.NodeId("Projector");
    const int working = browser.NodeId("Live");
    const int lights = browser.NodeId("Lights");
    const int screen = browser.NodeId("Screen");
    const std::string tooLong(65508, 'x');
    ASSERT_EQ(browser.Store({
                  {1, "works", working, true, "On", "one,", 0},
                  {1, "works", lights, true, "On", "31 0a 00 FF", 1},
                  {1, "skipped", 999, true, "On", "lost", 0},
                  {1, "tcp", projector, true, "PowerOn", "x", 0},
                  {1, "tcp", working, true, "", "two,", 0},
                  {1, "all", screen, false, "S", "x", 0},
                  {1, "all", lights, true, "", tooLong, 0},
                  {1, "all", projector, true, "PowerOn", "x", 0},
                  {1, "serial", working, true, "", "three,", 0},
                  {1, "serial", screen, false, "S", "x", 0},
                  {1, "udp", lights, true, "L", tooLong, 0},
                  {1, "digits", working, true, "D", "zz", 1},
              }),
              20000);
    const std::string tcp = "Projectorfailed to send PowerOn,reason:" + kRefused;
    const std::string serial = "Screenfailed to send S,reason:" + kNoFile;
    struct Row {
        const char* trigger;
        int code;
        std::string message;
    };
    const std::vector<Row> table = {
        {"works", 20000, ""},
        {"skipped", 30203, ""},
        {"unknown", 30203, ""},
        {"tcp", 30201, tcp},
        {"all", 30201, serial + "\r\nLightsfailed to send ,reason:" + kTooLong + "\r\n" + tcp},
        {"serial", 30200, serial},
        {"udp", 30202, "Lightsfailed to send L,reason:" + kTooLong},
        {"digits", 30201, "Livefailed to send D,reason:" + Reason(13)},
    };
    for (const Row& row : table) {
        EXPECT_EQ(browser.Click(1, row.trigger), json({{"code", row.code}, {"message", row.message}}))
            << row.trigger;
    }
    const json broken = {
        {"data", {{"componentId", 1}, {"interactionArr", {{{"triggerType", "serial"}}, {{"x", 1}}}}}}};
    EXPECT_EQ(browser.Post("useComponent", broken), json({{"code", 30101}, {"message", ""}}));
    EXPECT_EQ(live.Received().WaitBytes(20), "one,two,three,three,");
    EXPECT_EQ(udp.Received().WaitBytes(4), std::string("1\n\0\xff", 4));
    ASSERT_EQ(browser.Post("deleteAllInterfaceConfig", json()).at("code"), 20000);
    EXPECT_EQ(browser.Click(1, "works").at("code"), 30203);
    EXPECT_EQ(host.Stop(), 0);
}

/** A host with interfaces to silent devices, node ids 1 to 4, and to a live one, node id 5. */
class SilentDevices : public ::testing::Test {
  protected:
    void SetUp() override {
        json list = json::array();
        for (int id = 1; id <= 5; ++id) {
            const int port = id == 5 ? m_live.Port() : m_silent[static_cast<std::size_t>(id) - 1].Port();
            list.push_back(
                {{"nodeId", id},
                 {"controlType", "netPortInfo"},
                 {"netPortInfo", Browser::NetInfo("Device" + std::to_string(id), "TCP_Client", 0, port)}});
        }
        simulation::WriteFile(m_host.UserData() / "interFace.json", json{{"configList", list}}.dump());
        m_host.Start();
        m_browser.emplace(m_host);
        std::vector<Command> commands;
        for (int id = 1; id <= 5; ++id) {
            commands.push_back({id, "click", id, true, "On", "x", 0});
        }
        ASSERT_EQ(m_browser->Store(commands), 20000);
    }

    void TearDown() override { EXPECT_EQ(m_host.Stop(), 0) << m_host.Process().ErrorOutput(); }

    /** Clicks until the click waits for its device: right after a failed attempt it is refused at once. */
    void Hang(int component) {
        HttpClient& client = m_clients.emplace_back(m_host.HttpPort());
        const bool hangs = simulation::WaitUntil([&] {
            client.Write(HttpClient::Request("POST", "/api/centralControl/useComponent",
                                             Browser::ClickBody(component).dump()));
            return !client.Connection().WaitReadable(milliseconds(300)) || client.ReadReply().status != 200;
        });
        ASSERT_TRUE(hangs);
    }

    void ExpectStillHanging() {
        for (HttpClient& client : m_clients) {
            EXPECT_FALSE(client.Connection().WaitReadable(milliseconds(0))) << "the click should still hang";
        }
    }

    void ExpectTimedOut() {
        for (HttpClient& client : m_clients) {
            const json reply = json::parse(client.ReadReply().body);
            EXPECT_EQ(reply.at("code"), 30201);
            EXPECT_NE(reply.at("message").get<std::string>().find(",reason:10060"), std::string::npos)
                << reply;
        }
    }

    std::array<simulation::SilentDevice, 4> m_silent;
    simulation::TcpListener m_live;
    HostProcess m_host;
    std::optional<Browser> m_browser;
    std::list<HttpClient> m_clients;
};

TEST_F(SilentDevices, ThreeLeaveClicksAndDocumentsAlone) {
    for (int id = 1; id <= 3; ++id) {
        Hang(id);
    }
    EXPECT_EQ(m_browser->Click(5).at("code"), 20000);
    EXPECT_EQ(m_browser->Get("getConfigList").at("configList").size(), 5U);
    EXPECT_EQ(m_live.Received().WaitBytes(1), "x");
    ExpectStillHanging();
    ExpectTimedOut();
}

TEST_F(SilentDevices, FourLeaveStaticFilesAndChannelsAlone) {
    for (int id = 1; id <= 4; ++id) {
        Hang(id);
    }
    HttpClient client(m_host.HttpPort());
    EXPECT_EQ(client.Get("/no-such-file.js").status, 404);
    EXPECT_TRUE(m_browser->Channel().Heartbeat());
    EXPECT_TRUE(simulation::WebSocketClient(m_host.WebSocketPort()).Heartbeat());
    ExpectStillHanging();
    ExpectTimedOut();
    EXPECT_EQ(m_browser->Click(5).at("code"), 20000);
}

}  // namespace
