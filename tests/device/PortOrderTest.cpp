// What the interface and command routes ask of the port library, in which order, and what is stored at that
// moment.

#include "device/PortContract.h"
#include "server/ClientsManager.h"
#include "server/RouterMgr.h"
#include "simulation/Machine.h"
#include "tests/device/RecordingComManager.h"
#include "userdata/UserData.h"

#include <memory>

#include <gtest/gtest.h>

namespace {

using Json = nlohmann::json;

struct SRequest {
    int (*handler)(HttpRequest*, HttpResponse*);
    std::string body;
};

Json Post(const SRequest& route) {
    HttpRequest request;
    request.path = "/test";
    request.body = route.body;
    HttpResponse response;
    EXPECT_EQ(route.handler(&request, &response), 200);
    return Json::parse(response.body);
}

Json Net(const std::string& name, int dstPort, const std::string& mode) {
    return {{"netPortName", name},           {"netMode", mode},   {"ipAddress", ""}, {"port", 0},
            {"dstIpAddress", "192.168.0.9"}, {"dstPort", dstPort}};
}

Json Line(const std::string& name, const std::string& port) {
    return {{"comName", name},  {"comPort", port}, {"baudRate", 9600},
            {"parity", "None"}, {"stopBits", 1},   {"wordLength", 8}};
}

SRequest AddNet(const std::string& name, int dstPort, const std::string& mode = "TCP_Client") {
    return {RouterMgr::AddNetPortInfo, Json{{"data", {{"info", Net(name, dstPort, mode)}}}}.dump()};
}

SRequest AddLine(const std::string& name, const std::string& port) {
    return {RouterMgr::AddComInfo, Json{{"data", {{"info", Line(name, port)}}}}.dump()};
}

SRequest EditNet(int id, const std::string& name, int dstPort, const std::string& mode = "TCP_Client") {
    return {RouterMgr::EditNetPortInfo,
            Json{{"data", {{"nodeId", id}, {"info", Net(name, dstPort, mode)}}}}.dump()};
}

SRequest EditLine(int id, const std::string& name, const std::string& port) {
    return {RouterMgr::EditComInfo, Json{{"data", {{"nodeId", id}, {"info", Line(name, port)}}}}.dump()};
}

SRequest Delete(const std::string& body) {
    return {RouterMgr::DeleteInterfaceConfig, body};
}

class PortOrder : public testing::Test {
  protected:
    PortOrder() {
        CClientsManager::GetInstance()->AddClient(m_channel);
        Post({RouterMgr::DeleteAllInterfaceConfig, ""});
        TakePortCalls();
    }
    ~PortOrder() override { CClientsManager::GetInstance()->DeleteClient(m_channel); }

    /** Adds an interface and gives its node id. */
    static int Added(const SRequest& request) {
        EXPECT_EQ(Post(request)["code"], 20000);
        TakePortCalls();
        return CUserData::GetInstance().GetInterfaceConfig()["configList"].back()["nodeId"];
    }

    std::shared_ptr<hv::WebSocketChannel> m_channel = std::make_shared<hv::WebSocketChannel>();
};

TEST_F(PortOrder, AnInterfaceIsTriedBeforeItIsStored) {
    const int first = Added(AddNet("A", 101));
    const int line = Added(AddLine("S", "com7"));
    const int udp = Added(AddNet("U", 103, "UDP"));
    const std::string tooLong(4097, 'X');
    const struct {
        const char* what;
        SRequest request;
        int code;
        const char* calls;
    } steps[] = {
        {"added", AddNet("B", 102), 20000, "InitNetSocket 102 {A,S,U}\n"},
        {"no such client", AddNet("X", 1), 30302, "InitNetSocket 1 {A,S,U,B}\n"},
        {"no such server", AddNet("X", 1, "TCP_Server"), 30303, "InitNetSocket 1 {A,S,U,B}\n"},
        {"no such socket", AddNet("X", 1, "UDP"), 30301, "InitNetSocket 1 {A,S,U,B}\n"},
        {"no such line", AddLine("X", "COM1"), 30300, "CheckSerial COM1 {A,S,U,B}\n"},
        {"name of the other kind", AddNet("S", 104), 30304, ""},
        {"end points taken", AddNet("X", 101), 30306, ""},
        {"settings taken", AddLine("X", "COM7"), 30306, ""},
        {"a key is missing",
         {RouterMgr::AddNetPortInfo, R"({"data":{"info":{"netMode":"UDP"}}})"},
         30101,
         ""},
        {"no info", {RouterMgr::AddNetPortInfo, R"({"data":null})"}, 30101, ""},
        {"data is a number", {RouterMgr::AddComInfo, R"({"data":5})"}, 30101, ""},
        {"name too long", AddNet(tooLong, 104), 30101, ""},
        {"name of a line too long", AddLine(tooLong, "COM9"), 30101, ""},
        {"only the name changes", EditNet(first, "A2", 101), 20000, "InitNetSocket 101 {A,S,U,B}\n"},
        {"new end points: the new are open before the old are closed", EditNet(first, "A2", 105), 20000,
         "InitNetSocket 105 {S,U,B,A2}\nDeleteUserTcp 101 {S,U,B,A2}\n"},
        {"end points refused: the old stay", EditNet(first, "A2", 1), 30302, "InitNetSocket 1 {S,U,B,A2}\n"},
        {"a socket is not closed", EditNet(udp, "U", 106, "UDP"), 20000, "InitNetSocket 106 {S,U,B,A2}\n"},
        {"a line edited", EditLine(line, "S", "COM8"), 20000, "CheckSerial COM8 {S,B,A2,U}\n"},
        {"kind changed under the old name", EditLine(first, "A2", "COM9"), 30304, ""},
        {"kind changed", EditLine(first, "A3", "COM9"), 20000,
         "CheckSerial COM9 {B,A2,U,S}\nDeleteUserTcp 105 {B,A2,U,S}\n"},
        {"an unknown id is an add", EditNet(4711, "N", 107), 20000, "InitNetSocket 107 {B,U,S,A3}\n"},
        {"id is no number", {RouterMgr::EditNetPortInfo, R"({"data":{"nodeId":"1","info":{}}})"}, 30101, ""},
        {"id wrapped in data", Delete(R"({"data":{"nodeId":4711}})"), 30101, ""},
        {"a connection is closed before its record goes", Delete(R"({"nodeId":4711})"), 20000,
         "DeleteUserTcp 107 {B,U,S,A3,N}\n"},
        {"a socket is left", Delete(Json{{"nodeId", udp}}.dump()), 20000, ""},
        {"nobody has the id", Delete(R"({"nodeId":-5})"), 20000, ""},
        {"all go before they are closed",
         {RouterMgr::DeleteAllInterfaceConfig, ""},
         20000,
         "DeleteAllConnect {}\n"},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.what);
        EXPECT_EQ(Post(step.request), Json({{"code", step.code}, {"message", ""}}));
        EXPECT_EQ(TakePortCalls(), step.calls);
    }
}

TEST_F(PortOrder, NoIdIsGivenTwice) {
    const int first = Added(AddNet("A", 101));
    Post(AddNet("A", 102));  // refused, uses up its id
    EXPECT_EQ(Added(AddNet("B", 102)), first + 2);
    Post(EditNet(first + 3, "C", 103));  // brings its id in
    Post(EditLine(first + 4, "D", "COM7"));
    EXPECT_EQ(Added(AddNet("E", 104)), first + 5);
    EXPECT_EQ(Added(AddLine("F", "COM8")), first + 6);
}

Json Command(int portIndex, const std::string& kind, const std::string& content) {
    return {{"portIndex", portIndex},
            {"controlType", kind},
            {kind, {{"content", content}}},
            {"commandName", "On"}};
}

TEST_F(PortOrder, AClickSendsItsCommandsInOrder) {
    CUserData& store = CUserData::GetInstance();
    const int tcp = Added(AddNet("T", 101));
    const int line = Added(AddLine("S", "COM7"));
    SNetPortConfig dead;
    dead.dstPort = 1;
    dead.netPortName = "Dead";
    store.SetNetPortConfig(900, dead);
    dead.netPortName = "Mute";
    dead.netMode = NetModeUdp;
    store.SetNetPortConfig(901, dead);
    Json bytes = Command(line, "comInfo", "01 02");
    bytes.update({{"contentFormat", 1}, {"asciiEncode", 2}});
    const auto interaction = [](const char* trigger, const Json& commands) {
        return Json{{"triggerType", trigger}, {"commandArr", commands}};
    };
    const Json interactions = {
        interaction("press",
                    {Command(tcp, "netPortInfo", "PWR ON"), Command(4711, "netPortInfo", "nobody"), bytes}),
        interaction("dead", {Command(900, "netPortInfo", "x"), Command(901, "netPortInfo", "y"),
                             Command(tcp, "netPortInfo", "z")}),
        interaction("gone", Json::array({Command(4711, "comInfo", "x")}))};
    const Json components = Json::array({{{"componentId", 7}, {"interactionArr", interactions}}});
    store.SetComponentConfig({{"componentInteractionInfo", {{"componentArr", components}}}});

    const std::string pressed = "SendNetData 101 PWR ON text 0\nSendSerialData COM7 01 02 hex 2\n";
    const std::string tried = "SendNetData 1 x text 0\nSendNetData 1 y text 0\nSendNetData 101 z text 0\n";
    const std::string refused = "10061" + simulation::ErrorText(10061);
    const struct {
        const char* triggers;
        int language;
        int code;
        std::string message, calls;
    } rows[] = {
        {R"([{"triggerType":"press"}])", 1, 20000, "", pressed},
        {R"([{"triggerType":"dead"}])", 1, 30202,
         "Deadfailed to send On,reason:" + refused + "\r\nMutefailed to send On,reason:" + refused, tried},
        {R"([{"triggerType":"dead"}])", 0, 30202,
         "Dead发送On失败,原因:" + refused + "\r\nMute发送On失败,原因:" + refused, tried},
        // The commands of the first go out, although the second interaction ends the request.
        {R"([{"triggerType":"press"},{}])", 1, 30101, "", pressed},
        {"[]", 1, 30203, "", ""},
        {"null", 1, 30203, "", ""},
        {"{}", 1, 30203, "", ""},
        {R"([{"triggerType":"gone"}])", 1, 30203, "", ""},
        {R"([{"triggerType":"Press"}])", 1, 30203, "", ""},
        {"5", 1, 30101, "", ""},
        {"[5]", 1, 30101, "", ""},
        {R"([{"triggerType":5}])", 1, 30101, "", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.triggers);
        store.SetLanguage(row.language, false);
        const std::string body = R"({"data":{"componentId":7,"interactionArr":)";
        EXPECT_EQ(Post({RouterMgr::UseComponent, body + row.triggers + "}}"}),
                  Json({{"code", row.code}, {"message", row.message}}));
        EXPECT_EQ(TakePortCalls(), row.calls);
    }
}

TEST_F(PortOrder, APortLibraryThatCannotBeBuiltDoesNotEndTheStart) {
    Added(AddNet("A", 101));
    LetPortLibraryFail(true);
    EXPECT_NO_THROW(ReopenNetPorts());
    EXPECT_EQ(Post(AddNet("C", 103))["code"], 30101);
    LetPortLibraryFail(false);
    EXPECT_EQ(Post(AddNet("C", 103))["code"], 20000);
    EXPECT_EQ(TakePortCalls(), "InitNetSocket 103 {A}\n");
}

TEST_F(PortOrder, AStartOpensEachSavedNetworkPortOnce) {
    Added(AddNet("A", 101));
    Added(AddNet("B", 102));
    Added(AddLine("C", "COM3"));
    ReopenNetPorts();
    const std::string first = "InitNetSocket 101 together {A,B,C}\n";
    const std::string other = "InitNetSocket 102 together {A,B,C}\n";
    const std::string calls = TakePortCalls();
    EXPECT_TRUE(calls == first + other || calls == other + first) << calls;
}

}  // namespace
