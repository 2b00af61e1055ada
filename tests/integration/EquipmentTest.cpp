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

TEST_F(Equipment, IsStoredWhileItIsAway) {
    const int port = FreePort();
    const auto store = [&](const std::string& kind, const json& info, int nodeId = 0) {
        json data = {{"kind", kind}, {"info", info}};
        if (nodeId != 0) {
            data["nodeId"] = nodeId;
        }
        return json::parse(
            browser.Http()
                .Exchange(HttpClient::Request("POST", "/api/equipment/store", json{{"data", data}}.dump()))
                .body);
    };
    const json lamp = Browser::NetInfo("Lamp", "TCP_Client", 0, port);
    EXPECT_EQ(browser.AddNet("Lamp", "TCP_Client", 0, port), 30302);
    const int stored = store("net", lamp).at("data").at("nodeId");
    EXPECT_EQ(stored, States().at(0).at("nodeId"));
    EXPECT_EQ(States().at(0).at("state"), "failed");
    EXPECT_EQ(States().at(0).at("lastError").at("code"), 10061);

    const json serial = {{"comName", "Relay"}, {"comPort", "COM250"}, {"parity", "None"},
                         {"wordLength", 8},    {"stopBits", 1},       {"baudRate", 9600}};
    EXPECT_EQ(store("serial", serial).at("code"), 20000);
    json noPort = lamp;
    noPort["netPortName"] = "Other";
    noPort["dstPort"] = 70000;
    const struct {
        const char* what;
        json reply;
        int code;
    } refusals[] = {
        {"a name that is taken", store("net", Browser::NetInfo("Relay", "UDP", 0, 9)), 30304},
        {"end points that are taken", store("net", Browser::NetInfo("Other", "TCP_Client", 0, port)), 30306},
        {"an interface that is gone", store("net", lamp, 77), 30101},
        {"no port at all", store("net", noPort), 30101},
        {"half of the settings", store("serial", {{"comName", "Half"}}), 30101},
        {"an unknown kind", store("modem", lamp), 30101},
    };
    for (const auto& [what, reply, code] : refusals) {
        EXPECT_EQ(reply.at("code"), code) << what;
        EXPECT_EQ(reply.at("message").get_ref<const std::string&>().empty(), code != 30101) << what;
    }
    EXPECT_EQ(States().size(), 2U);

    const TcpListener device;
    EXPECT_EQ(store("net", Browser::NetInfo("Lamp", "TCP_Client", 0, device.Port()), stored).at("code"),
              20000);
    EXPECT_EQ(States().at(1).at("state"), "open");  // an edit goes to the end of the order
    EXPECT_EQ(store("serial", serial, stored).at("code"), 30304);
}

TEST_F(Equipment, ShowsWhatItsInterfacesSendAndReceive) {
    Browser* page = &browser;
    const auto post = [&](const std::string& route, const json& body) {
        const std::string path = "/api/equipment/" + route;
        return json::parse(page->Http().Exchange(HttpClient::Request("POST", path, body.dump())).body);
    };
    const auto traffic = [&](const std::string& node, std::uint64_t after = 0) {
        const std::string path = "/api/equipment/traffic/" + node + "?after=" + std::to_string(after);
        return json::parse(page->Http().Get(path).body);
    };
    const auto entries = [&](std::uint64_t after, std::size_t count) {
        json data;
        EXPECT_TRUE(WaitUntil([&] {
            data = traffic("1", after).at("data");
            return data.at("entries").size() >= count;
        })) << data;
        EXPECT_EQ(data.at("missed"), false);
        for (json& entry : data.at("entries")) {
            EXPECT_GT(entry.at("id"), after);
            EXPECT_GT(entry.at("time"), 1'700'000'000'000);
            EXPECT_EQ(entry.contains("client"), entry.at("out"));
            for (const char* varies : {"id", "time", "client"}) {
                entry.erase(varies);
            }
        }
        return data;
    };
    Socket listener = Socket::Listen();
    EXPECT_EQ(browser.AddNet("Lamp", "TCP_Client", 0, listener.LocalPort()), 20000);
    EXPECT_EQ(browser.Store({{7, "click", 1, true, "On", "on\r"}}), 20000);
    EXPECT_EQ(browser.Click(7).at("code"), 20000);
    Socket device = listener.Accept();
    EXPECT_EQ(device.Receive(), "on\r");
    device.Send("ok");
    const std::string address = "127.0.0.1:" + std::to_string(listener.LocalPort());
    const json clicked = entries(0, 2);
    EXPECT_EQ(clicked.at("fileUntil"), nullptr);
    EXPECT_EQ(clicked.at("entries"), json::array({{{"out", true},
                                                   {"hex", "6F6E0D"},
                                                   {"error", 0},
                                                   {"source", "component"},
                                                   {"component", 7},
                                                   {"trigger", "click"},
                                                   {"command", "On"}},
                                                  {{"out", false}, {"hex", "6F6B"}, {"peer", address}}}));

    EXPECT_EQ(post("traffic/file", {{"nodeId", 1}, {"minutes", 1}}).at("code"), 20000);
    EXPECT_GT(traffic("1").at("data").at("fileUntil"), 1'700'000'000'000);
    const json hex = {{"nodeId", 1}, {"content", "3F0D"}, {"contentFormat", 1}};
    EXPECT_EQ(post("send", hex).at("code"), 20000);
    EXPECT_EQ(device.Receive(), "?\r");
    device.Close();
    listener.Close();
    EXPECT_TRUE(WaitUntil([&] { return States().at(0).at("state") != "open"; }));
    const json failed = post("send", {{"nodeId", 1}, {"content", "off"}});
    EXPECT_EQ(failed.at("code"), 30201);
    EXPECT_NE(failed.at("message").get<std::string>().find("10061"), std::string::npos);
    json sent = entries(clicked.at("last"), 2);
    EXPECT_NE(sent.at("entries").at(1).at("errorText"), "");
    sent.at("entries").at(1).erase("errorText");
    EXPECT_EQ(sent.at("entries"),
              json::array({{{"out", true}, {"hex", "3F0D"}, {"error", 0}, {"source", "terminal"}},
                           {{"out", true}, {"hex", "6F6666"}, {"error", 10061}, {"source", "terminal"}}}));
    EXPECT_TRUE(WaitUntil([&] {
        const std::string log = host.UserFile("Log/Traffic.log");
        return log.find("[Lamp][out]") != std::string::npos &&
               log.find(" 3F 0D \"?\\r\" terminal") < log.find(" 6F 66 66 \"off\" error 10061");
    }));
    EXPECT_EQ(host.UserFile("Log/Traffic.log").find("6F 6E"), std::string::npos) << "from before";
    EXPECT_EQ(post("traffic/file", {{"nodeId", 1}, {"minutes", 0}}).at("data").at("fileUntil"), nullptr);

    const struct {
        const char* what;
        json reply;
    } refusals[] = {
        {"the traffic of nothing", traffic("77")},
        {"the traffic of a word", traffic("lamp")},
        {"a command to nothing", post("send", {{"nodeId", 77}, {"content", "on"}})},
        {"no command", post("send", {{"nodeId", 1}})},
        {"a file of nothing", post("traffic/file", {{"nodeId", 77}, {"minutes", 1}})},
        {"a file without end", post("traffic/file", {{"nodeId", 1}, {"minutes", 10081}})},
    };
    for (const auto& [what, reply] : refusals) {
        EXPECT_EQ(reply.at("code"), 30101) << what;
        EXPECT_NE(reply.at("message"), "") << what;
    }

    EXPECT_EQ(host.Stop(), 0);
    json config = json::parse(host.UserFile("LocalHost.config"));
    config["traffic_bytes"] = 0;
    WriteFile(host.UserData() / "LocalHost.config", config.dump());
    host.Start();
    EXPECT_EQ(json::parse(HttpClient(host.HttpPort())
                              .Exchange(HttpClient::Request("POST", "/api/equipment/send", hex.dump()))
                              .body)
                  .at("code"),
              30100);
    Browser again(host);
    page = &again;
    EXPECT_EQ(post("send", hex).at("code"), 30201);
    EXPECT_EQ(traffic("1").at("data").at("entries"), json::array());
    EXPECT_EQ(traffic("1").at("data").at("kept"), false);
    EXPECT_EQ(post("traffic/file", {{"nodeId", 1}, {"minutes", 1}}).at("code"), 30101);
}

TEST_F(Equipment, IsSeenByAMonitoringProgram) {
    const auto health = [&] {
        return json::parse(browser.Http().Get("/api/equipment/health").body).at("data");
    };
    std::optional<TcpListener> lamp(std::in_place);
    EXPECT_EQ(browser.AddNet("La\"mp", "TCP_Client", 0, lamp->Port()), 20000);
    EXPECT_EQ(browser.AddNet("Screen", "UDP", 0, 9), 20000);
    EXPECT_EQ(browser.Store({{7, "click", browser.NodeId("La\"mp"), true, "On", "on"}}), 20000);
    EXPECT_EQ(browser.Click(7).at("code"), 20000);
    lamp.reset();
    EXPECT_TRUE(WaitUntil([&] { return health().at("interfaces").at("open") == 1; }));
    EXPECT_EQ(browser.Click(7).at("code"), 30201);

    const std::filesystem::path layout = host.UserData() / "layout.json";
    std::filesystem::create_directory(layout);  // in the place of the document
    EXPECT_EQ(browser.Post("setCentralControlWebLayout", {{"data", {1}}}).at("code"), 20000);
    json seen;
    EXPECT_TRUE(WaitUntil([&] {  // the saves of what was added before may still be under way
        seen = health();
        return seen.at("savesFailing") == 1 && seen.at("savesPending") == 1;
    }));
    for (const char* figure : {"upSince", "memory"}) {
        EXPECT_GT(seen.at(figure), 1'000'000) << figure;
        seen.erase(figure);
    }
    seen.erase("version");
    EXPECT_EQ(seen,
              json({{"savesPending", 1},
                    {"savesFailing", 1},
                    {"logRecordsLost", 0},
                    {"channels", 1},
                    {"interfaces",
                     {{"closed", 0}, {"connecting", 0}, {"failed", 1}, {"listening", 0}, {"open", 1}}}}));

    const HttpReply metrics = browser.Http().Get("/metrics");
    EXPECT_EQ(metrics.Header("Content-Type"), "text/plain; version=0.0.4; charset=utf-8");
    const std::string label = "{node_id=\"1\",interface=\"La\\\"mp\"";
    for (const std::string& line :
         {std::string("control_saves_failing 1"), std::string("control_click_duration_seconds_count 2"),
          std::string("control_replies_total{code=\"30201\"} 1"),
          std::string("control_interfaces{state=\"failed\"} 1"), std::string("control_channels 1"),
          "control_interface_sent_bytes_total" + label + "} 2",
          "control_interface_failed_commands_total" + label + "} 1",
          "control_interface_send_duration_seconds_bucket" + label + ",le=\"+Inf\"} 2"}) {
        EXPECT_NE(metrics.body.find('\n' + line + '\n'), std::string::npos) << line << "\n" << metrics.body;
    }

    std::filesystem::remove(layout);
    EXPECT_TRUE(WaitUntil([&] { return health().at("savesPending") == 0; }));
    EXPECT_EQ(health().at("savesFailing"), 0);
    EXPECT_EQ(host.UserFile("Log/Operation.log").find("equipment"), std::string::npos);
}

}  // namespace
