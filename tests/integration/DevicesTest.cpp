// Interfaces and clicks, with equipment at the other end.

#include "simulation/Browser.h"
#include "simulation/Equipment.h"
#include "simulation/Machine.h"
#include "simulation/PtyPair.h"

#include <optional>

#include <gtest/gtest.h>

namespace {

using nlohmann::json;
using namespace simulation;

/** Lets a host know a serial line as COM7. */
void UseSerialLine(const HostProcess& host, const std::filesystem::path& device) {
    WriteFile(host.UserData() / "SerialPorts.json", json{{"COM7", device.string()}}.dump());
}

/** The names of the interfaces, each with a blank behind it. */
std::string Names(Browser& browser) {
    std::string names;
    const json document = browser.Get("getConfigList");
    for (const json& entry : document.at("configList")) {
        names += entry.at(entry.at("controlType").get<std::string>()).at("comName").get<std::string>() + " ";
    }
    return names;
}

TEST(Interfaces, AreTriedFirstAndStoredInOrder) {
    HostProcess host;
    const PtyPair line(host.Home() / "line");
    UseSerialLine(host, line.Device());
    const TcpListener device;
    const TcpListener other;
    const int closed = FreePort();
    host.Start();
    Browser browser(host);
    const auto edit = [&browser](const char* name, int port) {
        const json info = Browser::NetInfo(name, "TCP_Client", 0, port);
        return browser.Post("editNetPortInfo", {{"data", {{"nodeId", 1}, {"info", info}}}}).at("code");
    };
    EXPECT_EQ(browser.AddNet("A", "TCP_Client", 0, device.Port()), 20000);
    EXPECT_EQ(browser.AddNet("B", "TCP_Client", 0, closed), 30302);
    EXPECT_EQ(browser.AddNet("B", "TCP_Server", device.Port(), 0), 30303);
    json elsewhere = Browser::NetInfo("B", "UDP", 0, 9);
    elsewhere["ipAddress"] = "203.0.113.1";  // RFC 5737: an address that no machine has
    EXPECT_EQ(browser.Post("addNetPortInfo", {{"data", {{"info", elsewhere}}}}).at("code"), 30301);
    EXPECT_EQ(browser.AddSerial("B", "COM99"), 30300);
    EXPECT_EQ(Names(browser), "A ");
    EXPECT_EQ(browser.AddNet("B", "UDP", 0, 9), 20000);
    EXPECT_EQ(browser.AddSerial("Line", "com7"), 20000);
    EXPECT_EQ(edit("A", closed), 30302);
    EXPECT_EQ(Names(browser), "A B Line ");
    EXPECT_EQ(edit("C", device.Port()), 20000);
    EXPECT_EQ(Names(browser), "B Line C ") << "a new name moves to the end";
    EXPECT_EQ(edit("C", other.Port()), 20000);
    EXPECT_TRUE(WaitUntil([&] { return other.Accepted() == 1; }));
    EXPECT_EQ(browser.Post("deleteInterfaceConfig", {{"nodeId", browser.NodeId("B")}}).at("code"), 20000);
    const json document = browser.Get("getConfigList");
    EXPECT_EQ(document.at("configList").at(0).at("comInfo").at("comPort"), "COM7");
    EXPECT_EQ(host.Stop(), 0);
    EXPECT_EQ(host.UserFile("interFace.json"), document.dump(4));
    host.Start();
    Browser again(host);
    EXPECT_EQ(Names(again), "Line C ");
    EXPECT_TRUE(WaitUntil([&] { return other.Accepted() == 2; })) << "opened again at the start";
    ASSERT_EQ(again.Store({{1, "click", again.NodeId("Line"), false, "On", "on\n", 0}}), 20000);
    EXPECT_EQ(again.Click(1).at("code"), 20000);
    EXPECT_EQ(line.Received().WaitBytes(3), "on\n");
    EXPECT_EQ(again.Http().Get("/api/getServerComList").status, 200);
    EXPECT_EQ(again.Post("deleteAllInterfaceConfig", json()).at("code"), 20000);
    EXPECT_EQ(Names(again), "");
    EXPECT_EQ(host.Stop(), 0);
    EXPECT_NE(host.UserFile("Log/Operation.log").find("/api/getServerComList] [20000] [SerialComs Count "),
              std::string::npos);
}

/** The number of a failure and the system's text for it. */
std::string Reason(unsigned code) {
    return std::to_string(code) + ErrorText(code);
}

TEST(Click, TellsEachFailedCommandAndSendsTheOthers) {
    HostProcess host;
    auto device = std::make_unique<TcpListener>();
    const TcpListener live;
    const UdpListener udp;
    auto line = std::make_unique<PtyPair>(host.Home() / "line");
    UseSerialLine(host, line->Device());
    host.Start();
    Browser browser(host);
    const auto addNet = [&browser](const char* name, const char* mode, int port) {
        EXPECT_EQ(browser.AddNet(name, mode, 0, port), 20000);
        return browser.NodeId(name);
    };
    const int projector = addNet("Projector", "TCP_Client", device->Port());
    const int working = addNet("Live", "TCP_Client", live.Port());
    const int lights = addNet("Lights", "UDP", udp.Port());
    ASSERT_EQ(browser.AddSerial("Screen", "COM7"), 20000);
    const int screen = browser.NodeId("Screen");
    const std::string tooLong(65508, 'x');
    ASSERT_EQ(browser.Store({
                  {1, "works", working, true, "On", "one,", 0},
                  {1, "works", lights, true, "On", "31 0a 00 FF", 1},
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
    EXPECT_EQ(browser.Click(1, "works"), json({{"code", 20000}, {"message", ""}}));
    device.reset();  // switched off
    line.reset();    // unplugged
    const std::string tcp = "Projectorfailed to send PowerOn,reason:" + Reason(10061);
    const std::string serial = "Screenfailed to send S,reason:" + Reason(2);
    const struct {
        const char* trigger;
        int code;
        std::string message;
    } rows[] = {
        {"tcp", 30201, tcp},
        {"all", 30201, serial + "\r\nLightsfailed to send ,reason:" + Reason(10040) + "\r\n" + tcp},
        {"serial", 30200, serial},
        {"udp", 30202, "Lightsfailed to send L,reason:" + Reason(10040)},
        {"digits", 30201, "Livefailed to send D,reason:" + Reason(13)},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(browser.Click(1, row.trigger), json({{"code", row.code}, {"message", row.message}}))
            << row.trigger;
    }
    EXPECT_EQ(live.Received().WaitBytes(14), "one,two,three,");
    EXPECT_EQ(udp.Received().WaitBytes(4), std::string("1\n\0\xff", 4));
    EXPECT_EQ(host.Stop(), 0);
}

// Three clicks that wait leave other clicks and documents alone, four leave static files and channels alone.
TEST(Click, ThatWaitsForASilentDeviceHoldsUpNoOther) {
    const std::array<SilentDevice, 4> silent;
    const TcpListener live;
    HostProcess host;
    json list = json::array();
    std::vector<Command> commands;
    for (int id = 1; id <= 5; ++id) {
        const int port = id == 5 ? live.Port() : silent[static_cast<std::size_t>(id) - 1].Port();
        list.push_back(
            {{"nodeId", id},
             {"controlType", "netPortInfo"},
             {"netPortInfo", Browser::NetInfo("Device" + std::to_string(id), "TCP_Client", 0, port)}});
        commands.push_back({id, "click", id, true, "On", "x", 0});
    }
    WriteFile(host.UserData() / "interFace.json", json{{"configList", list}}.dump());
    host.Start();
    Browser browser(host);
    ASSERT_EQ(browser.Store(commands), 20000);
    std::list<HttpClient> clicks;
    for (int id = 1; id <= 4; ++id) {
        if (id == 4) {
            EXPECT_EQ(browser.Click(5).at("code"), 20000);
            EXPECT_EQ(browser.Get("getConfigList").at("configList").size(), 5U);
        }
        HttpClient& click = clicks.emplace_back(host.HttpPort());
        ASSERT_TRUE(WaitUntil([&] {  // right after a failed attempt it is refused at once
            click.Write(HttpClient::Request("POST", "/api/centralControl/useComponent",
                                            Browser::ClickBody(id).dump()));
            return !click.Connection().WaitReadable(milliseconds(300)) || click.ReadReply().status != 200;
        }));
    }
    EXPECT_EQ(HttpClient(host.HttpPort()).Get("/no-such-file.js").status, 404);
    EXPECT_TRUE(browser.Channel().Heartbeat());
    EXPECT_TRUE(WebSocketClient(host.WebSocketPort()).Heartbeat());
    for (HttpClient& click : clicks) {
        EXPECT_FALSE(click.Connection().WaitReadable(milliseconds(0))) << "the click should still wait";
    }
    for (HttpClient& click : clicks) {
        const std::string reply = click.ReadReply().body;
        EXPECT_NE(reply.find(R"({"code":30201,)"), std::string::npos) << reply;
        EXPECT_NE(reply.find(",reason:10060"), std::string::npos) << reply;
    }
    EXPECT_EQ(browser.Click(5).at("code"), 20000);
    EXPECT_EQ(live.Received().WaitBytes(2), "xx");
    EXPECT_EQ(host.Stop(), 0) << host.Process().ErrorOutput();
}

}  // namespace
