// Documents, envelopes and the operation log, over the built host's sockets.

#include "support/Browser.h"

#include <regex>
#include <sstream>

#include <gtest/gtest.h>

namespace {

using nlohmann::json;
using support::Browser;
using support::HostProcess;
using support::HttpClient;
using support::HttpReply;

struct Document {
    const char* setter;
    const char* getter;
    const char* file;
    json value;
};

TEST(Documents, ComeBackAfterARestartAndLieSortedInTheirFiles) {
    const std::vector<Document> documents = {
        {"setCentralControlWebLayout", "getPageLayoutInfo", "layout.json",
         json::parse(
             R"({"zoom": 1.5, "pages": [{"title": "会议室 Ä\u0000", "b": [], "a": null}], "n": -0.0})")},
        {"setMaterialList",
         "getMaterialList",
         "materials.json",
         {{"materialList", {1, "two", {{"three", 3}}}}}},
        {"updateComponentInteraction", "getComponentInteractionInfo", "componentConfig.json",
         Browser::Interactions({{7, "click", 1, true, "On", "on\r\n", 0}})},
    };
    HostProcess host;
    host.Start();
    {
        Browser browser(host);
        for (const Document& document : documents) {
            EXPECT_EQ(browser.Post(document.setter, {{"data", "replaced at once"}}).at("code"), 20000);
            EXPECT_EQ(browser.Post(document.setter, {{"data", document.value}}).at("code"), 20000);
            EXPECT_EQ(browser.Get(document.getter), document.value) << document.getter;
        }
    }
    EXPECT_EQ(host.Stop(), 0);
    for (const Document& document : documents) {
        EXPECT_EQ(host.UserFile(document.file), document.value.dump(4)) << document.file;
    }
    host.Start();
    for (const Document& document : documents) {
        EXPECT_EQ(
            json::parse(
                HttpClient(host.HttpPort()).Get(std::string("/api/centralControl/") + document.getter).body)
                .at("data"),
            document.value);
    }
}

struct Exchange {
    const char* name;
    const char* method;
    const char* route;
    const char* body;
    int status;
    const char* reply;
};

constexpr const char* kDone = R"({"code":20000,"message":""})";
constexpr const char* kNoConnection = R"({"code":30100,"message":""})";
constexpr const char* kBadRequest = R"({"code":30101,"message":""})";
constexpr const char* kNothingSent = R"({"code":30203,"message":""})";

void ExpectReplies(const HostProcess& host, const std::vector<Exchange>& table,
                   const char* from = "127.0.0.1") {
    HttpClient client(host.HttpPort(), from);
    for (const Exchange& row : table) {
        const std::string path = std::string("/api/centralControl/") + row.route;
        const HttpReply reply = client.Exchange(HttpClient::Request(row.method, path, row.body));
        EXPECT_EQ(reply.status, row.status) << row.name;
        EXPECT_EQ(reply.body, row.reply) << row.name;
        if (row.status == 200) {
            EXPECT_EQ(reply.Header("Content-Type"), "application/json; charset=utf-8") << row.name;
        }
    }
}

TEST(Envelope, RepliesAreTheseBytes) {
    HostProcess host;
    host.Start();
    const std::vector<Exchange> withoutChannel = {
        {"set without a channel", "POST", "setMaterialList", R"({"data":1})", 200, kNoConnection},
        {"empty body without a channel", "POST", "setMaterialList", "", 200, kNoConnection},
        {"click without a channel", "POST", "useComponent", "{}", 200, kNoConnection},
        {"delete all without a channel", "POST", "deleteAllInterfaceConfig", "", 200, kNoConnection},
        {"a GET needs none", "GET", "getConfigList", "", 200,
         R"({"code":20000,"data":{"configList":[]},"message":""})"},
        {"null has no data", "GET", "getPageLayoutInfo", "", 200, kDone},
    };
    ExpectReplies(host, withoutChannel);
    const Browser browser(host);
    ExpectReplies(
        host,
        {
            {"empty body", "POST", "setMaterialList", "", 200, kBadRequest},
            {"no JSON", "POST", "setMaterialList", "{\"data\":", 200, kBadRequest},
            {"comment", "POST", "setMaterialList", "{/**/\"data\":1}", 200, kBadRequest},
            {"array", "POST", "setMaterialList", "[{\"data\":1}]", 200, kBadRequest},
            {"other case", "POST", "setMaterialList", "{\"Data\":1}", 200, kBadRequest},
            {"bad UTF-8", "POST", "setMaterialList", "{\"data\":\"\xc3(\"}", 200, kBadRequest},
            {"lone surrogate", "POST", "setMaterialList", R"({"data":"\ud800"})", 200, kBadRequest},
            {"too large a number", "POST", "setMaterialList", R"({"data":1e400})", 200, kBadRequest},
            {"untouched", "GET", "getMaterialList", "", 200,
             R"({"code":20000,"data":{"materialList":[]},"message":""})"},
            {"text", "POST", "setMaterialList", R"({"x":0,"data":"\u00e4","data":"ä\n"})", 200, kDone},
            {"text is raw", "GET", "getMaterialList", "", 200, R"({"code":20000,"data":"ä\n","message":""})"},
            {"empty object", "POST", "setMaterialList", R"({"data":{}})", 200, kDone},
            {"empty object is there", "GET", "getMaterialList", "", 200,
             R"({"code":20000,"data":{},"message":""})"},
            {"null", "POST", "setMaterialList", R"({"data":null})", 200, kDone},
            {"null is absent", "GET", "getMaterialList", "", 200, kDone},
            {"bad command", "POST", "updateComponentInteraction",
             R"({"data":{"componentInteractionInfo":{"componentArr":[{"componentId":1,"interactionArr":[{"triggerType":"t","commandArr":[{"portIndex":1,"controlType":"comInfo","comInfo":{"content":5}}]}]}]}}})",
             200, kBadRequest},
            {"click on nothing", "POST", "useComponent",
             R"({"data":{"componentId":1,"interactionArr":[{"triggerType":"t"}]}})", 200, kNothingSent},
            {"no interactions", "POST", "useComponent", R"({"data":{"componentId":1,"interactionArr":[]}})",
             200, kNothingSent},
            {"data is an array", "POST", "useComponent", R"({"data":[]})", 200, kNothingSent},
            {"no component", "POST", "useComponent", R"({"data":{"interactionArr":[]}})", 200, kNothingSent},
            {"component is a text", "POST", "useComponent",
             R"({"data":{"componentId":"1","interactionArr":[]}})", 200, kBadRequest},
            {"node id wrapped", "POST", "deleteInterfaceConfig", R"({"data":{"nodeId":1}})", 200,
             kBadRequest},
            {"unknown node id", "POST", "deleteInterfaceConfig", R"({"nodeId":4294967297})", 200, kDone},
            {"huge node id", "POST", "deleteInterfaceConfig", R"({"nodeId":-1e300})", 200, kDone},
            {"delete all, no body", "POST", "deleteAllInterfaceConfig", "", 200, kDone},
            {"infrared", "POST", "useInfraredCommand", "{}", 404, ""},
            {"unknown path", "GET", "nothing", "", 404, ""},
            {"GET of a POST route", "GET", "useComponent", "", 405, ""},
            {"POST to a GET route", "POST", "getConfigList", "{}", 405, ""},
        });
    ExpectReplies(host, {withoutChannel[0], withoutChannel[1]},
                  "127.0.0.2");  // the channel is another machine's
}

TEST(OperationLog, HoldsAnArrivalAndAReplyOfEachRequest) {
    HostProcess host;
    host.Start();
    {
        Browser browser(host);
        browser.Get("getMaterialList");
        browser.Http().Post("/api/centralControl/setMaterialList", "{\"data\":%n}");
    }
    EXPECT_EQ(host.Stop(), 0);
    std::vector<std::string> texts;
    std::istringstream lines(host.UserFile("Log/Operation.log"));
    const std::regex form(
        R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\[\w+\]\[Unknow\]\[\d+\]\[(127\.0\.0\.1\d+)\]\[/api/centralControl/(\w+)\] (.*))");
    std::smatch parts;
    for (std::string line; std::getline(lines, line);) {
        ASSERT_TRUE(std::regex_match(line, parts, form)) << line;
        if (parts[2] != "getConfigList") {  // asked while the host came up
            texts.push_back(parts[2].str() + " " + parts[3].str());
        }
    }
    ASSERT_EQ(texts.size(), 4U);
    EXPECT_EQ(texts[0], "getMaterialList ");
    EXPECT_EQ(texts[1], "getMaterialList [20000] [] ");
    EXPECT_EQ(texts[2], "setMaterialList ");
    EXPECT_TRUE(texts[3].starts_with("setMaterialList [30101] [[json.exception.parse_error.101]"))
        << texts[3];
    EXPECT_TRUE(texts[3].ends_with("] "));
    const std::string server = host.UserFile("Log/Server.log");
    EXPECT_NE(server.find("[Info]"), std::string::npos);
    EXPECT_NE(server.find("[CCenterServer::Running][] [[HTTP Server] Started Successfully!] [0.0.0.0] [" +
                          std::to_string(host.HttpPort()) + "] \n"),
              std::string::npos)
        << server;
}

}  // namespace
