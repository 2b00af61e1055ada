// Named values of devices, over the built host's sockets and lines.

#include "simulation/Machine.h"
#include "simulation/PtyPair.h"
#include "tests/integration/Served.h"

#include <atomic>

namespace {

using nlohmann::json;
using namespace simulation;

/** A device that gives the same answer to every question, until it has another. One connection at a time. */
class AskedDevice {
  public:
    int Port() const { return m_port; }
    int Asked() const { return m_asked; }
    void Answer(const std::string& answer) {
        const std::lock_guard lock(m_mutex);
        m_answer = answer;
    }

  private:
    void Run(const std::stop_token& stop) {
        constexpr milliseconds tick{5};
        Socket server;
        while (!stop.stop_requested()) {
            if (!server.IsOpen() && m_listener.WaitReadable(tick)) {
                server = m_listener.Accept();
            } else if (server.IsOpen() && server.WaitReadable(tick)) {
                if (server.Receive().empty()) {
                    server.Close();
                    continue;
                }
                ++m_asked;
                const std::lock_guard lock(m_mutex);
                server.Send(m_answer);
            }
        }
    }

    Socket m_listener = Socket::Listen();
    const int m_port = m_listener.LocalPort();
    std::mutex m_mutex;
    std::string m_answer = "POWR=0\rHOURS= 40\r";
    std::atomic<int> m_asked = 0;
    std::jthread m_thread{[this](const std::stop_token& stop) { Run(stop); }};
};

class Values : public Served {
  protected:
    json Ask(const std::string& query, std::optional<Browser>& page) {
        return json::parse(page->Http().Get("/api/equipment/values" + query).body).at("data");
    }
    json Ask(const std::string& query) {
        return json::parse(browser.Http().Get("/api/equipment/values" + query).body).at("data");
    }
    HttpReply Store(const json& document, const std::string& header = "") {
        return browser.Http().Exchange(
            HttpClient::Request("POST", "/api/equipment/config", json{{"data", document}}.dump(), header));
    }
    HttpReply Config(const std::string& header = "") {
        return browser.Http().Exchange(HttpClient::Request("GET", "/api/equipment/config", "", header));
    }
    /** Whether a value becomes this, while it is watched. */
    bool Becomes(const std::string& name, const json& value, bool isStale = false) {
        return WaitUntil([&] {
            const json values = Ask("?watch=" + name).at("values");
            return values.size() == 1 && values[0].at("value") == value && values[0].at("stale") == isStale;
        });
    }
    /** A device whose messages end with CR, and one value of each pattern. */
    static json Device(int nodeId, const json& poll, const json& patterns) {
        json device = {{"nodeId", nodeId}, {"framing", {{"kind", "terminator"}, {"hex", "0D"}}}};
        device["polls"] = {poll};
        device["patterns"] = patterns;
        return device;
    }
    static json Pattern(const std::string& pattern, const std::string& name, const char* type) {
        return {{"form", "text"},
                {"pattern", pattern},
                {"values", {{{"place", "v"}, {"name", name}, {"type", type}}}}};
    }
    static json Poll(const std::string& content, bool always) {
        return {{"content", content}, {"everyMs", 100}, {"always", always}};
    }
};

TEST_F(Values, AreAskedForWhileWatchedAndTurnStale) {
    std::optional<AskedDevice> projector(std::in_place);
    json power = Pattern("POWR={v}\r", "Power", "text");
    power["values"][0]["table"] = {{{"from", "1"}, {"to", "on"}}};
    EXPECT_EQ(browser.AddNet("Projector", "TCP_Client", 0, projector->Port()), 20000);
    const json device = Device(1, Poll("?\r", false), {power, Pattern("HOURS={v}", "Lamp hours", "number")});
    const json document = {{"version", 1}, {"devices", {device}}};
    ASSERT_EQ(json::parse(Store(document).body).at("code"), 20000);
    const json before = Ask("");
    EXPECT_EQ(projector->Asked(), 0) << "nobody watches";
    EXPECT_EQ(before.at("values").at(1),
              json({{"name", "Lamp hours"}, {"value", nullptr}, {"time", nullptr}, {"stale", true}}));
    EXPECT_EQ(Ask("?watch=&interface=1").at("values"), json::array());
    EXPECT_TRUE(WaitUntil([&] { return projector->Asked() > 0; }));
    EXPECT_TRUE(Becomes("Power", "0"));
    EXPECT_TRUE(Becomes("Lamp%20hours", 40));
    projector->Answer("POWR=1\r");
    EXPECT_TRUE(Becomes("Power", "on"));
    const json now = Ask("");
    EXPECT_GT(now.at("values").at(0).at("time"), 1'700'000'000'000);
    EXPECT_GT(now.at("last"), before.at("last"));
    const std::string after = "?after=" + now.at("last").dump();
    EXPECT_EQ(Ask(after).at("values"), json::array());
    projector->Answer("POWR=2\r");
    EXPECT_TRUE(Becomes("Power", "2"));
    EXPECT_EQ(Ask(after).at("values").size(), 1U);

    std::string endless;
    endless.resize(10'000'000, 'x');
    projector->Answer(endless);
    const int asked = projector->Asked();
    EXPECT_TRUE(WaitUntil([&] { return Ask("?watch=Power"), projector->Asked() > asked; }));
    projector->Answer("\rPOWR=1\r");
    EXPECT_TRUE(Becomes("Power", "on"));
    projector.reset();
    EXPECT_TRUE(Becomes("Power", "on", true));

    EXPECT_EQ(host.Stop(), 0);
    const std::string log = host.UserFile("Log/System.log");
    const std::size_t line = log.find("more than 4096 bytes");
    EXPECT_NE(line, std::string::npos);
    EXPECT_EQ(log.find("more than 4096 bytes", line + 1), std::string::npos);
    EXPECT_EQ(host.UserFile("Log/Operation.log").find("equipment/values"), std::string::npos);
    EXPECT_EQ(json::parse(host.UserFile("equipment.json")), document);
    host.Start();
    std::optional<Browser> page(host);
    EXPECT_GT(Ask("", page).at("last"), now.at("last"));
    EXPECT_EQ(Ask("", page).at("values").size(), 2U);
}

TEST_F(Values, ComeFromLinesAndDatagramsToo) {
    const PtyPair line(host.Home() / "line");
    WriteFile(host.UserData() / "SerialPorts.json", json{{"COM7", line.Device().string()}}.dump());
    EXPECT_EQ(host.Stop(), 0);
    host.Start();
    Browser page(host);
    const int port = FreePort();
    ASSERT_EQ(page.AddSerial("Relay", "COM7"), 20000);
    ASSERT_EQ(page.AddNet("Sensor", "UDP", port, port), 20000);  // hears what it sends
    json relay =
        Device(page.NodeId("Relay"), Poll("?", true), json::array({Pattern("R{v}", "Relay", "text")}));
    relay["framing"] = {{"kind", "silence"}, {"ms", 20}};
    relay["staleAfterSeconds"] = 1;
    json sensor =
        Device(page.NodeId("Sensor"), Poll("T=21", true), json::array({Pattern("T={v}", "T", "number")}));
    sensor["framing"] = relay["framing"];
    const json document = {{"version", 1}, {"devices", {relay, sensor}}};
    const json body = {{"data", document}};
    ASSERT_EQ(json::parse(page.Http().Post("/api/equipment/config", body.dump()).body).at("code"), 20000);
    line.Received().WaitBytes(1);
    line.Send("R1");
    const auto shows = [&](std::size_t index, const json& value, bool isStale) {
        return WaitUntil([&] {
            const json reply = json::parse(page.Http().Get("/api/equipment/values").body);
            const json& shown = reply.at("data").at("values").at(index);
            return shown.at("value") == value && shown.at("stale") == isStale;
        });
    };
    EXPECT_TRUE(shows(1, 21, false));
    if (Differences::kHearsLines) {
        EXPECT_TRUE(shows(0, "1", false));
        EXPECT_TRUE(shows(0, "1", true));
    }
}

TEST_F(Values, HaveADocumentThatIsNeverLost) {
    const json empty = {{"version", 1}, {"devices", json::array()}};
    const HttpReply first = Config();
    EXPECT_EQ(json::parse(first.body).at("data"), empty);
    EXPECT_EQ(Config("If-None-Match: " + first.Header("ETag") + "\r\n").status, 304);
    json bad = empty;
    bad["devices"] = {Device(1, Poll("", false), json::array())};
    const json refused = json::parse(Store(bad).body);
    EXPECT_EQ(refused.at("code"), 30101);
    EXPECT_NE(refused.at("message"), "");
    EXPECT_EQ(json::parse(browser.Http().Get("/api/equipment/values?after=x").body).at("code"), 30101);
    const json good = {
        {"version", 1}, {"devices", {Device(77, Poll("?", false), json::array())}}, {"note", 1}};
    const HttpReply stored = Store(good, "If-Match: " + first.Header("ETag") + "\r\n");
    EXPECT_EQ(stored.status, 200);
    EXPECT_EQ(Store(empty, "If-Match: " + first.Header("ETag") + "\r\n").status, 412);
    EXPECT_EQ(Config().Header("ETag"), stored.Header("ETag"));
    EXPECT_EQ(json::parse(Config().body).at("data"), good);

    EXPECT_EQ(host.Stop(), 0);
    const std::string newer = R"({"version": 2, "devices": "of another form"})";
    WriteFile(host.UserData() / "equipment.json", newer);
    host.Start();
    Browser page(host);
    EXPECT_EQ(json::parse(page.Http().Get("/api/equipment/config").body).at("data"), empty);
    EXPECT_NE(host.UserFile("Log/System.log").find("newer version"), std::string::npos);
    EXPECT_EQ(host.UserFile("equipment.json"), newer);
    const json body = {{"data", good}};
    EXPECT_EQ(json::parse(page.Http().Post("/api/equipment/config", body.dump()).body).at("code"), 20000);
    EXPECT_EQ(host.Stop(), 0);
    EXPECT_EQ(json::parse(host.UserFile("equipment.json")), good);
    EXPECT_EQ(host.UserFile("equipment.json.broken"), newer);
}

}  // namespace
