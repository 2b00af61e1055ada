// Generations of the documents, over the built host's sockets.

#include "simulation/Equipment.h"
#include "tests/integration/Served.h"

#include <atomic>
#include <set>
#include <thread>

#include <gtest/gtest.h>

namespace {

using nlohmann::json;
using namespace simulation;

class Versions : public Served {
  protected:
    json Ask(const std::string& route, const json& body) {
        return json::parse(browser.Http().Post("/api/versions/" + route, body.dump()).body);
    }

    json List() { return json::parse(browser.Http().Get("/api/versions").body).at("data").at("versions"); }

    json Read(const std::string& id, const std::string& document) {
        return json::parse(browser.Http().Get("/api/versions/" + id + "/" + document).body);
    }

    /** Puts a generation beside those that the server makes. */
    void Plant(const std::string& id, const std::map<std::string, std::string>& documents) const {
        for (const auto& [name, text] : documents) {
            WriteFile(host.UserData() / "Backup" / id / name, text);
        }
    }

    void StoreLayout(const json& layout) {
        EXPECT_EQ(browser.Post("setCentralControlWebLayout", {{"data", layout}}).at("code"), 20000);
    }
};

TEST_F(Versions, AreNamedRestoredAndTakenBack) {
    TcpListener lamp;
    EXPECT_EQ(browser.AddNet("Lamp", "TCP_Client", 0, lamp.Port()), 20000);
    EXPECT_EQ(browser.Store({{7, "click", 1, true, "On", "then"}}), 20000);
    EXPECT_EQ(browser.Post("setMaterialList", {{"data", {{"materialList", {1}}}}}).at("code"), 20000);
    StoreLayout("then");
    const auto devices = [](int nodeId) {
        const json device = {{"nodeId", nodeId}, {"framing", {{"kind", "length"}, {"bytes", 4}}}};
        return json{{"version", 1}, {"devices", {device}}};
    };
    const auto equipment = [&] {
        return json::parse(browser.Http().Get("/api/equipment/config").body).at("data");
    };
    const auto storeEquipment = [&](const json& document) {
        browser.Http().Post("/api/equipment/config", json{{"data", document}}.dump());
        EXPECT_EQ(equipment(), document);
    };
    storeEquipment(devices(1));
    const json kept = Ask("keep", {{"name", "Before the fair"}});
    ASSERT_EQ(kept.at("code"), 20000) << kept;
    const std::string id = kept.at("data").at("id");

    const json& interactions = Browser::Interactions({{7, "click", 1, true, "On", "now"}});
    EXPECT_EQ(browser.Store({{7, "click", 1, true, "On", "now"}}), 20000);
    StoreLayout("now");
    storeEquipment(devices(5));
    const HttpReply list = browser.Http().Get("/api/versions");
    const json first = json::parse(list.body).at("data").at("versions").at(0);
    EXPECT_EQ(first.at("id"), id);
    EXPECT_EQ(first.at("name"), "Before the fair");
    EXPECT_EQ(first.at("documents").size(), 5U);
    EXPECT_EQ(Read(id, "layout.json"), "then");
    const auto ifNoneMatch = [&](const std::string& path, const std::string& tag) {
        const std::string header = "If-None-Match: " + tag + "\r\n";
        return browser.Http().Exchange(HttpClient::Request("GET", path, "", header)).status;
    };
    const std::string document = "/api/versions/" + id + "/layout.json";
    EXPECT_EQ(ifNoneMatch("/api/versions", list.Header("ETag")), 304);
    EXPECT_EQ(ifNoneMatch(document, browser.Http().Get(document).Header("ETag")), 304);

    const json restored = Ask("restore", {{"id", id}});
    ASSERT_EQ(restored.at("code"), 20000) << restored;
    EXPECT_EQ(restored.at("data").at("missing"), json::array());
    EXPECT_EQ(ifNoneMatch("/api/versions", list.Header("ETag")), 200);
    EXPECT_EQ(browser.Get("getPageLayoutInfo"), "then");
    EXPECT_EQ(browser.Get("getMaterialList"), json({{"materialList", {1}}}));
    EXPECT_EQ(equipment(), devices(1));
    EXPECT_EQ(browser.Click(7).at("code"), 20000);
    EXPECT_EQ(lamp.Received().WaitBytes(4), "then");

    const std::string undo = restored.at("data").at("kept");
    EXPECT_EQ(Read(undo, "componentConfig.json"), interactions);
    // Meanwhile the lamp is taken out, and its id may go to other equipment.
    EXPECT_EQ(browser.Post("deleteInterfaceConfig", {{"nodeId", 1}}).at("code"), 20000);
    const json back = Ask("restore", {{"id", undo}}).at("data");
    EXPECT_EQ(back.at("missing"), json::parse(R"([{"nodeId":1,"name":"Lamp"}])"));
    EXPECT_EQ(browser.Get("getPageLayoutInfo"), "now");
    EXPECT_EQ(browser.Get("getComponentInteractionInfo"),
              Browser::Interactions({{7, "click", -1, true, "On", "now"}}));
    EXPECT_EQ(equipment(), devices(-5)) << "nobody's";
    EXPECT_EQ(Ask("name", {{"id", id}, {"name", ""}}).at("code"), 20000);
    EXPECT_EQ(List().back().at("name"), "");
    EXPECT_EQ(host.Stop(), 0);
    EXPECT_EQ(host.UserFile("layout.json"), "\"now\"");
    const std::string log = host.UserFile("Log/Operation.log");
    EXPECT_EQ(log.find("[/api/versions]"), std::string::npos) << "reading leaves no trace";
    EXPECT_NE(log.find("/api/versions/restore"), std::string::npos);
    host.Start();
}

TEST_F(Versions, AreRefusedBeforeAnythingChanges) {
    const std::string whole = "2026-11-20_10-00-00";
    Plant(whole, {{"layout.json", "\"old\""}, {"secret.json", "1"}});
    Plant("2026-11-21_10-00-00", {{"layout.json", "\"old\""}, {"materials.json", "{\"cut"}});
    Plant("2026-11-21_11-00-00", {{"layout.json", std::string(300, '[') + std::string(300, ']')}});
    std::filesystem::create_directories(host.UserData() / "Backup/2026-11-21_12-00-00/layout.json");
    Plant(
        "2026-11-21_13-00-00",
        {{"componentConfig.json",
          R"({"componentInteractionInfo":{"componentArr":[{"componentId":1,"interactionArr":[{"triggerType":"a",)"
          R"("commandArr":[{"portIndex":1,"controlType":"comInfo","comInfo":{"content":1}}]}]}]}})"}});
    Plant("2026-11-21_14-00-00", {{"equipment.json", R"({"version":2})"}});
    Plant("old/" + whole, {{"layout.json", "1"}});
    StoreLayout("now");
    const json before = List();
    for (const std::string id :
         {"", "..", ".", "old", "2026-11-20_10-00-00/", "../Backup/2026-11-20_10-00-00",
          "old/2026-11-20_10-00-00", "2026-11-20_10-00-00.tmp", "2026-11-20_10-00-01", "2026-11-21_10-00-00",
          "2026-11-21_11-00-00", "2026-11-21_12-00-00", "2026-11-21_13-00-00", "2026-11-21_14-00-00"}) {
        SCOPED_TRACE(id);
        const json reply = Ask("restore", {{"id", id}});
        EXPECT_EQ(reply.at("code"), 30101);
        EXPECT_NE(reply.at("message"), "");
    }
    EXPECT_EQ(List(), before) << "nothing is kept for a refusal";
    for (const char* body :
         {"{}", "[]", R"({"id":1,"name":1})", R"({"id":"2026-11-20_10-00-01","name":"a\tb"})"}) {
        for (const char* route : {"restore", "name", "keep"}) {
            EXPECT_EQ(Ask(route, json::parse(body)).at("code"), 30101) << route << body;
        }
    }
    for (const char* path :
         {"2026-11-20_10-00-00/secret.json", "2026-11-20_10-00-00/materials.json", "../layout.json",
          "..%2f..%2flayout.json/layout.json", "2026-11-21_12-00-00/layout.json",
          "2026-11-20_10-00-00/..%2f..%2flayout.json", "2026-11-20_10-00-00/"}) {
        EXPECT_EQ(browser.Http().Get(std::string("/api/versions/") + path).status, 404) << path;
    }
    EXPECT_EQ(browser.Get("getPageLayoutInfo"), "now");
    EXPECT_EQ(HttpClient(host.HttpPort(), "127.0.0.2").Post("/api/versions/restore", R"({"id":"a"})").body,
              R"({"code":30100,"message":""})");
    EXPECT_EQ(Ask("restore", {{"id", whole}}).at("code"), 20000);
    EXPECT_EQ(browser.Get("getMaterialList"), json({{"materialList", json::array()}}));
}

// Another author saves without a pause: what a restoration replaces is kept, or it is what was restored.
TEST_F(Versions, LoseNothingThatIsSavedMeanwhile) {
    const std::string id = "2026-11-20_10-00-00";
    Plant(id, {{"layout.json", "\"old\""}});
    StoreLayout(0);
    std::set<json> replaced;
    std::atomic<bool> isDone = false;
    std::thread author([&] {
        HttpClient client(host.HttpPort());
        for (int number = 1; !isDone; ++number) {
            client.Post("/api/centralControl/setCentralControlWebLayout", json{{"data", number}}.dump());
            const json found =
                json::parse(client.Get("/api/centralControl/getPageLayoutInfo").body).at("data");
            if (found != number) {
                EXPECT_EQ(found, "old");
                replaced.insert(number);
            }
        }
    });
    std::set<json> kept;
    for (int i = 0; i < 10; ++i) {
        const json reply = Ask("restore", {{"id", id}});
        EXPECT_EQ(reply.at("message").get<std::string>().empty(), reply.at("code") == 20000) << reply;
    }
    isDone = true;
    author.join();
    for (const json& version : List()) {
        kept.insert(Read(version.at("id"), "layout.json"));
    }
    for (const json& number : replaced) {
        EXPECT_TRUE(kept.contains(number)) << number;
    }
}

}  // namespace
