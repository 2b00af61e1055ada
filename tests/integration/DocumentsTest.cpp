// Documents, envelopes and the operation log, over the built host's sockets.

#include "simulation/Browser.h"

#include <array>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include <zlib.h>

namespace {

using nlohmann::json;
using simulation::Browser;
using simulation::HostProcess;
using simulation::HttpClient;
using simulation::HttpReply;

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

/** Makes the requests of a table file on one connection, in order, and compares the replies byte for byte. */
void ExpectReplies(const HostProcess& host, const char* file, const char* from = "127.0.0.1") {
    HttpClient client(host.HttpPort(), from);
    std::istringstream lines(simulation::ReadFile(std::filesystem::path(TEST_TABLES) / file));
    int rows = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('#')) {
            continue;
        }
        std::array<std::string, 5> columns;  // what, request, body, status, reply
        std::size_t begin = 0;
        for (std::string& column : columns) {
            const std::size_t end = std::min(line.find(" |", begin), line.size());
            column = line.substr(begin, end - begin);
            begin = std::min(end + 3, line.size());
        }
        const std::size_t blank = columns[1].find(' ');
        const bool isWhole = columns[1][blank + 1] == '/';
        const std::string path = (isWhole ? "" : "/api/centralControl/") + columns[1].substr(blank + 1);
        const HttpReply reply =
            client.Exchange(HttpClient::Request(columns[1].substr(0, blank), path, columns[2]));
        EXPECT_EQ(std::to_string(reply.status), columns[3]) << line;
        EXPECT_EQ(reply.body, columns[4]) << line;
        EXPECT_EQ(reply.Header("Content-Type"), reply.status == 200 ? "application/json; charset=utf-8" : "")
            << line;
        ++rows;
    }
    EXPECT_GT(rows, 0) << file;
}

TEST(Envelope, RepliesAreTheseBytes) {
    HostProcess host;
    host.Start();
    ExpectReplies(host, "replies_without_channel.txt");
    Browser browser(host);
    ExpectReplies(host, "replies.txt");
    EXPECT_EQ(browser.Http().Post("/api/centralControl/setMaterialList", "{\"data\":\"\xc3(\"}").body,
              R"({"code":30101,"message":""})");
    ExpectReplies(host, "replies_without_channel.txt", "127.0.0.2");  // the channel is another machine's
}

TEST(Documents, AreReadAndReplacedByTheirState) {
    struct Row {
        const char* what;
        const char* header;  ///< %1: the state that is stored, %2: the one before it
        int read;            ///< status of a reading with If-None-Match
        int write;           ///< status of a write with If-Match
    };
    const Row rows[] = {
        {"the state", "\"%1\"", 304, 200},
        {"weak", "W/\"%1\"", 304, 412},
        {"in a list", "\"%2\" ,W/\"a,b\",, \"%1\"", 304, 200},
        {"an old one", "\"%2\"", 200, 412},
        {"any", "*", 304, 200},
        {"no quotes", "%1", 200, 412},
        {"behind what is none", "x, \"%1\"", 200, 412},
        {"nothing", "", 200, 412},
    };
    HostProcess host;
    host.Start();
    Browser browser(host);
    const auto exchange = [&](const char* method, const std::string& route, const json& data,
                              const std::string& headers) {
        return browser.Http().Exchange(HttpClient::Request(method, "/api/centralControl/" + route,
                                                           data.is_null() ? "" : json{{"data", data}}.dump(),
                                                           headers));
    };
    const std::pair<const char*, const char*> routes[] = {
        {"getPageLayoutInfo", "setCentralControlWebLayout"},
        {"getMaterialList", "setMaterialList"},
        {"getComponentInteractionInfo", "updateComponentInteraction"},
    };
    const auto replace = [](std::string text, std::string_view what, const std::string& by) {
        const std::size_t at = text.find(what);
        return at == std::string::npos ? text : text.replace(at, what.size(), by);
    };
    const auto inner = [](const HttpReply& reply) {
        const std::string tag = reply.Header("ETag");
        return tag.size() > 2 ? tag.substr(1, tag.size() - 2) : tag;
    };
    for (const auto& [getter, setter] : routes) {
        std::string old = inner(exchange("GET", getter, nullptr, ""));
        EXPECT_EQ(exchange("POST", setter, 0, "If-Match: \"" + old + "\"\r\n").status, 200) << getter;
        int number = 0;
        for (const Row& row : rows) {
            const HttpReply before = exchange("GET", getter, nullptr, "");
            const std::string tag = inner(before);
            const std::string names = replace(replace(row.header, "%1", tag), "%2", old);
            const HttpReply read = exchange("GET", getter, nullptr, "If-None-Match: " + names + "\r\n");
            EXPECT_EQ(read.status, row.read) << getter << " " << row.what;
            EXPECT_EQ(read.body, row.read == 304 ? "" : before.body) << getter << " " << row.what;
            EXPECT_EQ(inner(read), tag);
            EXPECT_EQ(read.Header("Cache-Control"), "no-cache");
            const HttpReply write = exchange("POST", setter, ++number, "If-Match: " + names + "\r\n");
            EXPECT_EQ(write.status, row.write) << getter << " " << row.what;
            EXPECT_EQ(write.body, row.write == 200 ? R"({"code":20000,"message":""})" : "") << row.what;
            const HttpReply after = exchange("GET", getter, nullptr, "");
            EXPECT_EQ(after.body, row.write == 412 ? before.body
                                                   : R"({"code":20000,"data":)" + std::to_string(number) +
                                                         R"(,"message":""})");
            EXPECT_EQ(inner(after), row.write == 412 ? tag : inner(write)) << getter << " " << row.what;
            old = row.write == 412 ? old : tag;
        }
    }
    EXPECT_EQ(exchange("GET", "getConfigList", nullptr, "If-None-Match: *\r\n").status, 304);
    EXPECT_EQ(exchange("GET", "getCentralControlInterfaceList", nullptr, "If-None-Match: *\r\n").status, 304);
    EXPECT_EQ(exchange("POST", "setMaterialList", nullptr, "If-Match: \"x\"\r\n").body,
              R"({"code":30101,"message":""})");
}

/** The text of a gzip stream; empty when it is none, or not all of one. */
std::string Unpacked(const std::string& packed, std::size_t longest) {
    z_stream stream{};
    std::string text(longest, '\0');
    stream.next_in = reinterpret_cast<const Bytef*>(packed.data());
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = reinterpret_cast<Bytef*>(text.data());
    stream.avail_out = static_cast<uInt>(text.size());
    constexpr int onlyGzip = 16;
    const bool isWhole =
        inflateInit2(&stream, MAX_WBITS + onlyGzip) == Z_OK && inflate(&stream, Z_FINISH) == Z_STREAM_END;
    text.resize(isWhole && stream.avail_in == 0 ? stream.total_out : 0);
    inflateEnd(&stream);
    return text;
}

TEST(Documents, AreSentCompressedToThoseWhoTakeIt) {
    HostProcess host;
    host.Start();
    Browser browser(host);
    const auto get = [&](const std::string& headers) {
        return browser.Http().Exchange(
            HttpClient::Request("GET", "/api/centralControl/getPageLayoutInfo", "", headers));
    };
    const auto store = [&](const json& data) {
        EXPECT_EQ(browser.Post("setCentralControlWebLayout", {{"data", data}}).at("code"), 20000);
    };
    const std::string takes = "Accept-Encoding: br, gzip\r\n";
    store("below a kilobyte " + std::string(900, 'x'));
    EXPECT_EQ(get(takes).Header("Content-Encoding"), "");
    EXPECT_EQ(get(takes).Header("Vary"), "Accept-Encoding");

    json pages = json::array();
    for (const int number : {1, 2}) {  // another document, another text
        for (int i = 0; i < 3000; ++i) {
            pages.push_back({{"id", i * number}, {"name", "会议室"}});
        }
        store(pages);
        const HttpReply plain = get("");
        EXPECT_EQ(plain.Header("Content-Encoding"), "");
        for (int again = 0; again < 2; ++again) {
            const HttpReply packed = get(takes);
            EXPECT_EQ(packed.Header("Content-Encoding"), "gzip");
            EXPECT_EQ(packed.Header("Content-Type"), "application/json; charset=utf-8");
            EXPECT_LT(packed.body.size() * 5, plain.body.size());
            EXPECT_TRUE(Unpacked(packed.body, plain.body.size() + 1) == plain.body) << "another text";
        }
    }
    std::mt19937 random(1);  // a fixed seed: each run sends the same
    std::string picture(300'000, '\0');
    for (char& letter : picture) {
        letter = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"[random() % 64];
    }
    store({{"pages", {"会议室", {{"image", "data:image/png;base64," + picture}}, "会议室"}}});
    const HttpReply plain = get("");
    const HttpReply packed = get(takes);
    EXPECT_TRUE(Unpacked(packed.body, plain.body.size() + 1) == plain.body) << "another text";
    EXPECT_LT(packed.body.size() * 1000, plain.body.size() * 755)
        << "it was searched for what comes twice, which takes long and makes more of it";

    const std::string plainTag = get("").Header("ETag");
    const std::string packedTag = get(takes).Header("ETag");
    EXPECT_NE(plainTag, packedTag);
    for (const std::string& tag : {plainTag, packedTag}) {
        const HttpReply known = get(std::string(takes).append("If-None-Match: ").append(tag).append("\r\n"));
        EXPECT_EQ(known.status, 304);
        EXPECT_EQ(known.Header("ETag"), tag);
    }
    const auto replace = [&](const std::string& tag) {
        return browser.Http()
            .Exchange(HttpClient::Request("POST", "/api/centralControl/setCentralControlWebLayout",
                                          R"({"data":1})", "If-Match: " + tag + "\r\n"))
            .status;
    };
    EXPECT_EQ(replace(packedTag), 200) << "the tag of a compressed reply names the state as well";
    EXPECT_EQ(replace(packedTag), 412);
}

TEST(Documents, AStateKeepsItsTagOverARestart) {
    HostProcess host;
    host.Start();
    const auto tag = [&host] {
        return HttpClient(host.HttpPort()).Get("/api/centralControl/getPageLayoutInfo").Header("ETag");
    };
    const std::string none = tag();
    Browser(host).Post("setCentralControlWebLayout", {{"data", {{"b", -0.0}, {"a", "会议室"}}}});
    const std::string stored = tag();
    EXPECT_NE(stored, none);
    EXPECT_EQ(host.Stop(), 0);
    host.Start();
    EXPECT_EQ(tag(), stored);
}

TEST(OperationLog, HoldsAnArrivalAndAReplyOfEachRequest) {
    HostProcess host;
    host.Start();
    {
        Browser browser(host);
        browser.Get("getMaterialList");
        browser.Http().Post("/api/centralControl/setMaterialList", "{\"data\":%n}");
        browser.Http().Exchange(
            HttpClient::Request("GET", "/api/centralControl/getMaterialList", "", "If-None-Match: *\r\n"));
        browser.Http().Exchange(HttpClient::Request("POST", "/api/centralControl/setMaterialList",
                                                    R"({"data":1})", "If-Match: \"x\"\r\n"));
    }
    EXPECT_EQ(host.Stop(), 0);
    std::vector<std::string> texts;
    std::istringstream lines(host.UserFile("Log/Operation.log"));
    for (std::string line; std::getline(lines, line);) {
        const std::size_t path = line.find("][/api/centralControl/");
        ASSERT_NE(path, std::string::npos) << line;
        const std::string text = line.substr(path + 22);
        if (!text.starts_with("getConfigList")) {  // asked while the host came up
            texts.push_back(text);
        }
    }
    ASSERT_EQ(texts.size(), 8U);
    EXPECT_EQ(texts[5], "getMaterialList] [304] [] ");
    EXPECT_EQ(texts[7], "setMaterialList] [412] [another state is stored] ");
    EXPECT_EQ(texts[0], "getMaterialList] ");
    EXPECT_EQ(texts[1], "getMaterialList] [20000] [] ");
    EXPECT_EQ(texts[2], "setMaterialList] ");
    EXPECT_TRUE(texts[3].starts_with("setMaterialList] [30101] [[json.exception.parse_error.101]"))
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
