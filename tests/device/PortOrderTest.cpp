// What the interface and command routes ask of the port library, in which order, and what is stored at that
// moment.

#include "device/PortContract.h"
#include "server/ClientsManager.h"
#include "server/RouterMgr.h"
#include "simulation/Machine.h"
#include "tests/device/RecordingComManager.h"
#include "userdata/UserData.h"

#include <algorithm>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Json = nlohmann::json;
using Handler = int (*)(HttpRequest*, HttpResponse*);
using Calls = std::vector<std::string>;

Json Post(Handler handler, const std::string& body) {
    HttpRequest request;
    request.path = "/test";
    request.body = body;
    HttpResponse response;
    EXPECT_EQ(handler(&request, &response), 200);
    return Json::parse(response.body);
}

Json Net(const std::string& name, int dstPort, const std::string& mode = "TCP_Client") {
    return {{"netPortName", name},           {"netMode", mode},   {"ipAddress", ""}, {"port", 0},
            {"dstIpAddress", "192.168.0.9"}, {"dstPort", dstPort}};
}

Json Serial(const std::string& name, const std::string& port) {
    return {{"comName", name},  {"comPort", port}, {"baudRate", 9600},
            {"parity", "None"}, {"stopBits", 1},   {"wordLength", 8}};
}

std::string Add(const Json& info) {
    return Json{{"data", {{"info", info}}}}.dump();
}

std::string Edit(int nodeId, const Json& info) {
    return Json{{"data", {{"nodeId", nodeId}, {"info", info}}}}.dump();
}

class PortOrder : public testing::Test {
  protected:
    PortOrder() {
        CClientsManager::GetInstance()->AddClient(m_channel);
        Post(RouterMgr::DeleteAllInterfaceConfig, "");
        TakePortCalls();
    }
    ~PortOrder() override { CClientsManager::GetInstance()->DeleteClient(m_channel); }

    /** Adds an interface and gives its node id. */
    static int Added(Handler handler, const Json& info) {
        EXPECT_EQ(Post(handler, Add(info))["code"], 20000);
        TakePortCalls();
        return CUserData::GetInstance().GetInterfaceConfig()["configList"].back()["nodeId"];
    }

    std::shared_ptr<hv::WebSocketChannel> m_channel = std::make_shared<hv::WebSocketChannel>();
};

struct SStep {
    const char* what;
    Handler handler;
    std::string body;
    int code;
    Calls calls;
};

TEST_F(PortOrder, AnInterfaceIsTriedBeforeItIsStored) {
    const int first = Added(RouterMgr::AddNetPortInfo, Net("A", 101));
    const int serial = Added(RouterMgr::AddComInfo, Serial("S", "com7"));
    const int udp = Added(RouterMgr::AddNetPortInfo, Net("U", 103, "UDP"));
    const SStep steps[] = {
        {"added", RouterMgr::AddNetPortInfo, Add(Net("B", 102)), 20000, {"InitNetSocket 102 {A,S,U}"}},
        {"no such client", RouterMgr::AddNetPortInfo, Add(Net("X", 1)), 30302, {"InitNetSocket 1 {A,S,U,B}"}},
        {"no such server",
         RouterMgr::AddNetPortInfo,
         Add(Net("X", 1, "TCP_Server")),
         30303,
         {"InitNetSocket 1 {A,S,U,B}"}},
        {"no such socket",
         RouterMgr::AddNetPortInfo,
         Add(Net("X", 1, "UDP")),
         30301,
         {"InitNetSocket 1 {A,S,U,B}"}},
        {"no such line",
         RouterMgr::AddComInfo,
         Add(Serial("X", "COM1")),
         30300,
         {"CheckSerial COM1 {A,S,U,B}"}},
        {"name of the other kind", RouterMgr::AddNetPortInfo, Add(Net("S", 104)), 30304, {}},
        {"end points taken", RouterMgr::AddNetPortInfo, Add(Net("X", 101)), 30306, {}},
        {"settings taken", RouterMgr::AddComInfo, Add(Serial("X", "COM7")), 30306, {}},
        {"a key is missing", RouterMgr::AddNetPortInfo, R"({"data":{"info":{"netMode":"UDP"}}})", 30101, {}},
        {"no info", RouterMgr::AddNetPortInfo, R"({"data":null})", 30101, {}},
        {"name too long", RouterMgr::AddNetPortInfo, Add(Net(std::string(4097, 'X'), 104)), 30101, {}},
        {"name of a line too long",
         RouterMgr::AddComInfo,
         Add(Serial(std::string(4097, 'X'), "COM9")),
         30101,
         {}},
        {"data is a number", RouterMgr::AddComInfo, R"({"data":5})", 30101, {}},
        {"only the name changes",
         RouterMgr::EditNetPortInfo,
         Edit(first, Net("A2", 101)),
         20000,
         {"InitNetSocket 101 {A,S,U,B}"}},
        {"new end points: the new are open before the old are closed",
         RouterMgr::EditNetPortInfo,
         Edit(first, Net("A2", 105)),
         20000,
         {"InitNetSocket 105 {S,U,B,A2}", "DeleteUserTcp 101 {S,U,B,A2}"}},
        {"end points refused: the old stay",
         RouterMgr::EditNetPortInfo,
         Edit(first, Net("A2", 1)),
         30302,
         {"InitNetSocket 1 {S,U,B,A2}"}},
        {"a socket is not closed",
         RouterMgr::EditNetPortInfo,
         Edit(udp, Net("U", 106, "UDP")),
         20000,
         {"InitNetSocket 106 {S,U,B,A2}"}},
        {"a line edited",
         RouterMgr::EditComInfo,
         Edit(serial, Serial("S", "COM8")),
         20000,
         {"CheckSerial COM8 {S,B,A2,U}"}},
        {"kind changed under the old name",
         RouterMgr::EditComInfo,
         Edit(first, Serial("A2", "COM9")),
         30304,
         {}},
        {"kind changed",
         RouterMgr::EditComInfo,
         Edit(first, Serial("A3", "COM9")),
         20000,
         {"CheckSerial COM9 {B,A2,U,S}", "DeleteUserTcp 105 {B,A2,U,S}"}},
        {"an unknown id is an add",
         RouterMgr::EditNetPortInfo,
         Edit(4711, Net("N", 107)),
         20000,
         {"InitNetSocket 107 {B,U,S,A3}"}},
        {"id is no number", RouterMgr::EditNetPortInfo, R"({"data":{"nodeId":"1","info":{}}})", 30101, {}},
        {"id wrapped in data", RouterMgr::DeleteInterfaceConfig, R"({"data":{"nodeId":4711}})", 30101, {}},
        {"a connection is closed before its record goes",
         RouterMgr::DeleteInterfaceConfig,
         R"({"nodeId":4711})",
         20000,
         {"DeleteUserTcp 107 {B,U,S,A3,N}"}},
        {"a socket is left", RouterMgr::DeleteInterfaceConfig, Json{{"nodeId", udp}}.dump(), 20000, {}},
        {"nobody has the id", RouterMgr::DeleteInterfaceConfig, R"({"nodeId":-5})", 20000, {}},
        {"all go before they are closed",
         RouterMgr::DeleteAllInterfaceConfig,
         "",
         20000,
         {"DeleteAllConnect {}"}},
    };
    for (const SStep& step : steps) {
        SCOPED_TRACE(step.what);
        const Json reply = Post(step.handler, step.body);
        EXPECT_EQ(reply, Json({{"code", step.code}, {"message", ""}}));
        EXPECT_EQ(TakePortCalls(), step.calls);
    }
}

TEST_F(PortOrder, AFailedAddUsesUpItsId) {
    const int before = Added(RouterMgr::AddNetPortInfo, Net("A", 101));
    Post(RouterMgr::AddNetPortInfo, Add(Net("A", 102)));
    EXPECT_EQ(Added(RouterMgr::AddNetPortInfo, Net("B", 102)), before + 2);
}

TEST_F(PortOrder, AnIdThatAnEditBroughtInIsNotGivenAgain) {
    const int before = Added(RouterMgr::AddNetPortInfo, Net("A", 101));
    Post(RouterMgr::EditNetPortInfo, Edit(before + 1, Net("B", 102)));
    Post(RouterMgr::EditComInfo, Edit(before + 2, Serial("C", "COM7")));
    EXPECT_EQ(Added(RouterMgr::AddNetPortInfo, Net("D", 103)), before + 3);
    EXPECT_EQ(Added(RouterMgr::AddComInfo, Serial("E", "COM8")), before + 4);
}

Json Command(int portIndex, const std::string& kind, const std::string& content,
             const Json& more = Json::object()) {
    Json command = {{"portIndex", portIndex},
                    {"controlType", kind},
                    {kind, {{"content", content}}},
                    {"commandName", "On"}};
    command.update(more);
    return command;
}

TEST_F(PortOrder, AClickSendsItsCommandsInOrder) {
    const int tcp = Added(RouterMgr::AddNetPortInfo, Net("T", 101));
    const int line = Added(RouterMgr::AddComInfo, Serial("S", "COM7"));
    CUserData::GetInstance().SetNetPortConfig(900, [] {
        SNetPortConfig dead;
        dead.netPortName = "Dead";
        dead.dstPort = 1;
        return dead;
    }());
    CUserData::GetInstance().SetNetPortConfig(901, [] {
        SNetPortConfig dead;
        dead.netPortName = "Mute";
        dead.dstPort = 1;
        dead.netMode = NetModeUdp;
        return dead;
    }());
    const Json press = {Command(tcp, "netPortInfo", "PWR ON"), Command(4711, "netPortInfo", "nobody"),
                        Command(line, "comInfo", "01 02", {{"contentFormat", 1}, {"asciiEncode", 2}})};
    const Json dead = {Command(900, "netPortInfo", "x"), Command(901, "netPortInfo", "y"),
                       Command(tcp, "netPortInfo", "z")};
    const Json interactions = {{{"triggerType", "press"}, {"commandArr", press}},
                               {{"triggerType", "dead"}, {"commandArr", dead}},
                               {{"triggerType", "gone"}, {"commandArr", {Command(4711, "comInfo", "x")}}}};
    const Json document = {{"componentInteractionInfo",
                            {{"componentArr", {{{"componentId", 7}, {"interactionArr", interactions}}}}}}};
    ASSERT_EQ(Post(RouterMgr::UpdateComponentInteraction, Json{{"data", document}}.dump())["code"], 20000);
    CUserData::GetInstance().SetLanguage(1, false);

    const auto fire = [](const std::string& triggers) {
        return Post(RouterMgr::UseComponent,
                    R"({"data":{"componentId":7,"interactionArr":)" + triggers + "}}");
    };
    const Calls pressed = {"SendNetData 101 PWR ON text 0", "SendSerialData COM7 01 02 hex 2"};
    const std::string refused = simulation::ErrorText(10061);
    const std::string failures =
        "Deadfailed to send On,reason:10061" + refused + "\r\nMutefailed to send On,reason:10061" + refused;

    EXPECT_EQ(fire(R"([{"triggerType":"press"}])"), Json({{"code", 20000}, {"message", ""}}));
    EXPECT_EQ(TakePortCalls(), pressed);
    EXPECT_EQ(fire(R"([{"triggerType":"dead"}])"), Json({{"code", 30202}, {"message", failures}}));
    EXPECT_EQ(TakePortCalls(),
              Calls({"SendNetData 1 x text 0", "SendNetData 1 y text 0", "SendNetData 101 z text 0"}));
    // The commands of the first go out, although the second interaction ends the request.
    EXPECT_EQ(fire(R"([{"triggerType":"press"},{}])"), Json({{"code", 30101}, {"message", ""}}));
    EXPECT_EQ(TakePortCalls(), pressed);
    for (const char* nothing :
         {"[]", "null", "{}", R"([{"triggerType":"gone"}])", R"([{"triggerType":"Press"}])"}) {
        EXPECT_EQ(fire(nothing)["code"], 30203) << nothing;
    }
    for (const char* bad : {"5", "[5]", R"([{"triggerType":5}])"}) {
        EXPECT_EQ(fire(bad)["code"], 30101) << bad;
    }
    EXPECT_EQ(Post(RouterMgr::UseComponent, R"({"data":[1]})")["code"], 30203);
    EXPECT_EQ(Post(RouterMgr::UseComponent, R"({"data":{"componentId":"7","interactionArr":[]}})")["code"],
              30101);

    CUserData::GetInstance().SetLanguage(0, false);
    EXPECT_THAT(fire(R"([{"triggerType":"dead"}])")["message"].get<std::string>(),
                testing::StartsWith("Dead发送On失败,原因:10061"));
    TakePortCalls();
}

TEST_F(PortOrder, APortLibraryThatCannotBeBuiltDoesNotEndTheStart) {
    Added(RouterMgr::AddNetPortInfo, Net("A", 101));
    Added(RouterMgr::AddNetPortInfo, Net("B", 102));
    LetPortLibraryFail(true);
    EXPECT_NO_THROW(ReopenNetPorts());
    EXPECT_EQ(Post(RouterMgr::AddNetPortInfo, Add(Net("C", 103)))["code"], 30101);
    LetPortLibraryFail(false);
    EXPECT_EQ(Post(RouterMgr::AddNetPortInfo, Add(Net("C", 103)))["code"], 20000);
    EXPECT_EQ(TakePortCalls(), Calls({"InitNetSocket 103 {A,B}"}));
}

TEST_F(PortOrder, AStartOpensEachSavedNetworkPortOnce) {
    Added(RouterMgr::AddNetPortInfo, Net("A", 101));
    Added(RouterMgr::AddNetPortInfo, Net("B", 102));
    Added(RouterMgr::AddComInfo, Serial("C", "COM3"));
    TakePortCalls();
    ReopenNetPorts();
    std::vector<std::string> calls = TakePortCalls();
    std::sort(calls.begin(), calls.end());
    EXPECT_EQ(calls, Calls({"InitNetSocket 101 together {A,B,C}", "InitNetSocket 102 together {A,B,C}"}));
}

}  // namespace
