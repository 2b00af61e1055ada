// Documents, envelopes and the operation log, over the built host's sockets.

#include "tests/integration/Served.h"

#include <array>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include <zlib.h>

namespace {

using nlohmann::json;
using namespace simulation;
using Documents = Served;
using OperationLog = Served;

TEST_F(Documents, ComeBackAfterARestartAndLieSortedInTheirFiles) {
    const struct {
        const char* setter;
        const char* getter;
        const char* file;
        json value;
    } documents[] = {
        {"setCentralControlWebLayout", "getPageLayoutInfo", "layout.json",
         json::parse(
             R"({"zoom": 1.5, "pages": [{"title": "会议室 Ä\u0000", "b": [], "a": null}], "n": -0.0})")},
        {"setMaterialList", "getMaterialList", "materials.json",
         json::parse(R"({"materialList": [1, "two", {"three": 3}]})")},
        {"updateComponentInteraction", "getComponentInteractionInfo", "componentConfig.json",
         Browser::Interactions({{7, "click", 1, true, "On", "on\r\n", 0}})},
    };
    const auto read = [this](const std::string& getter) {
        return HttpClient(host.HttpPort()).Get("/api/centralControl/" + getter);
    };
    std::map<std::string, std::string> tags;
    for (const auto& document : documents) {
        const std::string none = read(document.getter).Header("ETag");
        EXPECT_EQ(browser.Post(document.setter, {{"data", "replaced at once"}}).at("code"), 20000);
        EXPECT_EQ(browser.Post(document.setter, {{"data", document.value}}).at("code"), 20000);
        EXPECT_EQ(browser.Get(document.getter), document.value) << document.getter;
        tags[document.getter] = read(document.getter).Header("ETag");
        EXPECT_NE(tags[document.getter], none);
    }
    EXPECT_EQ(host.Stop(), 0);
    for (const auto& document : documents) {
        EXPECT_EQ(host.UserFile(document.file), document.value.dump(4)) << document.file;
    }
    host.Start();
    for (const auto& document : documents) {
        const HttpReply reply = read(document.getter);
        EXPECT_EQ(json::parse(reply.body).at("data"), document.value);
        EXPECT_EQ(reply.Header("ETag"), tags[document.getter]) << document.getter;
    }
}

/** Makes the requests of a table file on one connection, in order, and compares the replies byte for byte. */
void ExpectReplies(const HostProcess& host, const char* file, const char* from = "127.0.0.1") {
    HttpClient client(host.HttpPort(), from);
    std::istringstream lines(ReadFile(std::filesystem::path(TEST_TABLES) / file));
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

TEST_F(Documents, AreReadAndReplacedByTheirState) {
    const struct {
        const char* what;
        const char* header;  ///< %1: the state that is stored, %2: the one before it
        int read;            ///< status of a reading with If-None-Match
        int write;           ///< status of a write with If-Match
    } rows[] = {
        {"the state", "\"%1\"", 304, 200},
        {"weak", "W/\"%1\"", 304, 412},
        {"in a list", "\"%2\" ,W/\"a,b\",, \"%1\"", 304, 200},
        {"an old one", "\"%2\"", 200, 412},
        {"any", "*", 304, 200},
        {"no quotes", "%1", 200, 412},
        {"behind what is none", "x, \"%1\"", 200, 412},
        {"nothing", "", 200, 412},
    };
    const auto get = [&](const std::string& route, const std::string& headers = {}) {
        return browser.Http().Exchange(
            HttpClient::Request("GET", "/api/centralControl/" + route, "", headers));
    };
    const auto post = [&](const std::string& route, const std::string& body, const std::string& tags) {
        return browser.Http().Exchange(
            HttpClient::Request("POST", "/api/centralControl/" + route, body, "If-Match: " + tags + "\r\n"));
    };
    const auto replace = [](std::string text, std::string_view what, const std::string& by) {
        const std::size_t at = text.find(what);
        return at == std::string::npos ? text : text.replace(at, what.size(), by);
    };
    const auto inner = [](const HttpReply& reply) {
        const std::string tag = reply.Header("ETag");
        return tag.size() > 2 ? tag.substr(1, tag.size() - 2) : tag;
    };
    for (const auto& [getter, setter] :
         {std::pair("getPageLayoutInfo", "setCentralControlWebLayout"),
          std::pair("getMaterialList", "setMaterialList"),
          std::pair("getComponentInteractionInfo", "updateComponentInteraction")}) {
        std::string old = inner(get(getter));
        EXPECT_EQ(post(setter, R"({"data":0})", "\"" + old + "\"").status, 200) << getter;
        int number = 0;
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(getter) + " " + row.what);
            const HttpReply before = get(getter);
            const std::string tag = inner(before);
            const std::string tags = replace(replace(row.header, "%1", tag), "%2", old);
            const HttpReply read = get(getter, "If-None-Match: " + tags + "\r\n");
            EXPECT_EQ(read.status, row.read);
            EXPECT_EQ(read.body, row.read == 304 ? "" : before.body);
            EXPECT_EQ(inner(read), tag);
            EXPECT_EQ(read.Header("Cache-Control"), "no-cache");
            const std::string data = R"("data":)" + std::to_string(++number);
            const HttpReply write = post(setter, "{" + data + "}", tags);
            const HttpReply after = get(getter);
            EXPECT_EQ(write.status, row.write);
            if (row.write == 412) {
                EXPECT_EQ(write.body, "");
                EXPECT_EQ(after.body, before.body);
                EXPECT_EQ(inner(after), tag);
            } else {
                EXPECT_EQ(write.body, R"({"code":20000,"message":""})");
                EXPECT_EQ(after.body, R"({"code":20000,)" + data + R"(,"message":""})");
                EXPECT_EQ(inner(after), inner(write));
                old = tag;
            }
        }
    }
    EXPECT_EQ(get("getConfigList", "If-None-Match: *\r\n").status, 304);
    EXPECT_EQ(get("getCentralControlInterfaceList", "If-None-Match: *\r\n").status, 304);
    EXPECT_EQ(post("setMaterialList", "", "\"x\"").body, R"({"code":30101,"message":""})");
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

TEST_F(Documents, AreSentCompressedToThoseWhoTakeIt) {
    const auto get = [&](const std::string& headers = {}) {
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

    /** Stores a document; gives the thousandth parts of it that the compressed reply, read twice, takes. */
    const auto packedShare = [&](const json& data) {
        store(data);
        const HttpReply plain = get();
        const HttpReply packed = get(takes);
        EXPECT_EQ(packed.body.size(), get(takes).body.size());
        EXPECT_EQ(plain.Header("Content-Encoding"), "");
        EXPECT_EQ(packed.Header("Content-Encoding"), "gzip");
        EXPECT_EQ(packed.Header("Content-Type"), "application/json; charset=utf-8");
        EXPECT_TRUE(Unpacked(packed.body, plain.body.size() + 1) == plain.body) << "another text";
        return packed.body.size() * 1000 / plain.body.size();
    };
    json pages = json::array();
    for (int i = 0; i < 3000; ++i) {
        pages.push_back({{"id", i}, {"name", "会议室"}});
    }
    EXPECT_LT(packedShare(pages), 200U);
    pages.push_back(pages);  // another document, another text
    EXPECT_LT(packedShare(pages), 200U);
    std::mt19937 random(1);  // a fixed seed: each run sends the same
    std::string picture(300'000, '\0');
    for (char& letter : picture) {
        letter = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"[random() % 64];
    }
    EXPECT_LT(packedShare({{"pages", {"会议室", {{"image", "data:image/png;base64," + picture}}, "会议室"}}}),
              755U)
        << "it was searched for what comes twice, which takes long and makes more of it";

    const std::string plainTag = get().Header("ETag");
    const std::string packedTag = get(takes).Header("ETag");
    EXPECT_NE(plainTag, packedTag);
    for (const std::string& tag : {plainTag, packedTag}) {
        const HttpReply known = get(std::string(takes).append("If-None-Match: ").append(tag).append("\r\n"));
        EXPECT_EQ(known.status, 304);
        EXPECT_EQ(known.Header("ETag"), tag);
    }
    const std::string replace = HttpClient::Request("POST", "/api/centralControl/setCentralControlWebLayout",
                                                    R"({"data":1})", "If-Match: " + packedTag + "\r\n");
    EXPECT_EQ(browser.Http().Exchange(replace).status, 200) << "that tag names the state as well";
    EXPECT_EQ(browser.Http().Exchange(replace).status, 412);
}

TEST_F(OperationLog, HoldsAnArrivalAndAReplyOfEachRequest) {
    const std::string list = "/api/centralControl/getMaterialList";
    const std::string setter = "/api/centralControl/setMaterialList";
    browser.Http().Get(list);
    browser.Http().Post(setter, "{\"data\":%n}");
    browser.Http().Exchange(HttpClient::Request("GET", list, "", "If-None-Match: *\r\n"));
    browser.Http().Exchange(HttpClient::Request("POST", setter, R"({"data":1})", "If-Match: \"x\"\r\n"));
    EXPECT_EQ(host.Stop(), 0);
    std::string texts;
    std::istringstream lines(host.UserFile("Log/Operation.log"));
    for (std::string line; std::getline(lines, line);) {
        const std::size_t path = line.find("][/api/centralControl/");
        ASSERT_NE(path, std::string::npos) << line;
        const std::string text = line.substr(path + 22);
        const std::size_t reason = text.find("[json.exception.parse_error.101]");
        texts += text.starts_with("getConfigList") ? ""  // asked while the host came up
                                                   : text.substr(0, reason) + "\n";
    }
    EXPECT_EQ(texts,
              "getMaterialList] \n"
              "getMaterialList] [20000] [] \n"
              "setMaterialList] \n"
              "setMaterialList] [30101] [\n"
              "getMaterialList] \n"
              "getMaterialList] [304] [] \n"
              "setMaterialList] \n"
              "setMaterialList] [412] [another state is stored] \n");
    const std::string started =
        "[CCenterServer::Running][] [[HTTP Server] Started Successfully!] [0.0.0.0] [";
    const std::string log = host.UserFile("Log/Server.log");
    EXPECT_NE(log.find("[Info]"), std::string::npos);
    EXPECT_NE(log.find(started + std::to_string(host.HttpPort()) + "] \n"), std::string::npos) << log;
}

}  // namespace
