// What the server tells about the equipment, over the built host's sockets.

#include "simulation/Equipment.h"
#include "tests/integration/Served.h"

namespace {

using nlohmann::json;
using namespace simulation;

class Equipment : public Served {
  protected:
    HttpReply Ask(const std::string& tag = "") {
        const std::string header = tag.empty() ? "" : "If-None-Match: " + tag + "\r\n";
        return browser.Http().Exchange(HttpClient::Request("GET", "/api/equipment/interfaces", "", header));
    }
    json States() { return json::parse(Ask().body).at("data").at("interfaces"); }
};

TEST_F(Equipment, HasItsInterfacesReported) {
    std::optional<TcpListener> lamp(std::in_place);
    EXPECT_EQ(States(), json::array());
    EXPECT_EQ(browser.AddNet("Lamp", "TCP_Client", 0, lamp->Port()), 20000);
    EXPECT_EQ(browser.AddNet("Screen", "UDP", 0, 9), 20000);
    EXPECT_EQ(browser.Store({{7, "click", 1, true, "On", "on"}}), 20000);
    EXPECT_EQ(browser.Click(7).at("code"), 20000);
    const HttpReply reply = Ask();
    const json states = json::parse(reply.body).at("data").at("interfaces");
    ASSERT_EQ(states.size(), 2U);
    json first = states.at(0);
    for (const char* time : {"since", "lastOut"}) {
        EXPECT_GT(first.at(time), 1'700'000'000'000) << time;
        first.erase(time);
    }
    EXPECT_EQ(first, json({{"nodeId", 1},
                           {"name", "Lamp"},
                           {"state", "open"},
                           {"peers", 0},
                           {"bytesOut", 2},
                           {"bytesIn", 0},
                           {"commandsOut", 1},
                           {"commandsFailed", 0},
                           {"commandsUnderWay", 0},
                           {"lastIn", nullptr},
                           {"lastError", nullptr}}));
    EXPECT_EQ(states.at(1).at("state"), "open");
    EXPECT_EQ(Ask(reply.Header("ETag")).status, 304);

    lamp.reset();
    EXPECT_TRUE(WaitUntil([&] { return States().at(0).at("state") != "open"; }));
    EXPECT_EQ(Ask(reply.Header("ETag")).status, 200);
    EXPECT_EQ(browser.Click(7).at("code"), 30201);
    const json error = States().at(0).at("lastError");
    EXPECT_EQ(error.at("code"), 10061);
    EXPECT_NE(error.at("text"), "");
    EXPECT_GT(error.at("time"), 1'700'000'000'000);
}

}  // namespace
