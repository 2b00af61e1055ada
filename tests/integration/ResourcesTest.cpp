// The folder of resources: nothing from outside of it, and large files without the memory for them.

#include "simulation/Browser.h"
#include "simulation/Machine.h"
#include "simulation/TableText.h"

#include <atomic>
#include <list>
#include <set>
#include <thread>

#include <gtest/gtest.h>

namespace {

using nlohmann::json;
using namespace simulation;
namespace fs = std::filesystem;

const std::string kRoute = "/api/getResource/";
constexpr std::string_view kRefusal = R"({"code":30101,"message":""})";

class Resources : public ::testing::Test {
  protected:
    void Write(const std::string& name, std::string_view text) { WriteFile(folder / name, text); }
    bool Link(const std::string& name, const fs::path& to) { return MakeLink(to, folder / name); }

    HostProcess host{{.ownInstallation = true}};
    const fs::path folder = host.Installation() / "Resource";
};

/** A name of the table: {installation} is its path, percent-encoded. */
std::string NameInRequest(std::string name, const fs::path& installation) {
    const std::string mark = "{installation}";
    if (name.starts_with(mark)) {
        std::string encoded;
        for (const fs::path& element : installation.relative_path()) {
            encoded += "%2F" + element.string();
        }
        name.replace(0, mark.size(), encoded);
    }
    return Expanded(name);
}

void ExpectReply(const std::string& name, const HttpReply& reply, const std::string& expected,
                 const std::string& type) {
    const bool isServed = expected[0] == '=';
    EXPECT_EQ(reply.status, expected == "missing" ? 422 : expected == "unknown" ? 404 : 200) << name;
    EXPECT_EQ(reply.body, isServed ? expected.substr(1) : expected == "refused" ? kRefusal : "") << name;
    EXPECT_EQ(reply.Header("Cache-Control"), isServed ? "public, max-age=3600" : "") << name;
    EXPECT_EQ(reply.Header("Content-Type"), expected == "refused" ? "application/json; charset=utf-8" : type)
        << name;
}

/** A name that means something else on Windows: relative to a drive, or so long that no file can have it. */
bool IsReadOtherwise(const std::string& name) {
    constexpr std::size_t longest = 259;
    return name == "C:" || name == "C:lamp.png" || name.size() > longest;
}

TEST_F(Resources, NeverComeFromOutside) {
    const json table = json::parse(ReadFile(fs::path(TEST_TABLES) / "resource_names.json"));
    for (const auto& [name, text] : table.at("files").items()) {
        Write(name, text.get<std::string>());
    }
    if (Differences::kNamesAsWritten) {
        Write("NUL.txt", "a device elsewhere");
    }
    std::set<std::string> missing;  // links that this system can't make
    for (const auto& [name, to] : table.at("links").items()) {
        if (!Link(name, to.get<std::string>())) {
            missing.insert(name);
        }
    }
    host.Start();
    HttpClient client(host.HttpPort());
    std::map<std::string, std::string> records;  // of the operation log, by path
    for (const json& row : table.at("names")) {
        const std::string name = NameInRequest(row[0], host.Installation());
        if (missing.contains(name.substr(0, name.find('%'))) ||
            (!Differences::kNamesAsWritten && (row[1] != "refused" || IsReadOtherwise(name)))) {
            continue;
        }
        ExpectReply(name, client.Get(kRoute + name), row[1], row[2]);
        records[kRoute + name] = row[3];
    }
    EXPECT_EQ(host.Stop(), 0) << host.Process().ErrorOutput();
    const std::string log = host.UserFile("Log/Operation.log");
    for (const auto& [path, text] : records) {
        std::string record = "][";
        record.append(path).append("] ").append(text, 0, text.find('*'));
        record += text.ends_with('*') ? "" : "\n";
        EXPECT_TRUE(text.empty() || log.find(record) != std::string::npos) << record.substr(0, 200);
    }
}

TEST_F(Resources, NeverComeThroughALinkThatTakesThePlaceOfAFolder) {
    Write("folder/file.txt", "inside");
    Write("../outside/file.txt", "secret");
    if (!Link("link", "../outside")) {
        GTEST_SKIP() << "links need special rights";
    }
    host.Start();
    std::atomic<bool> isOver = false;
    std::jthread swapper([&] {
        const auto move = [&](const char* from, const char* to) { fs::rename(folder / from, folder / to); };
        while (!isOver) {
            move("folder", "away");
            move("link", "folder");
            move("folder", "link");
            move("away", "folder");
        }
    });
    int served = 0;
    int refused = 0;
    HttpClient client(host.HttpPort());
    for (int request = 0; request < 6000; ++request) {
        const std::string body = client.Get(kRoute + "folder%2Ffile.txt").body;
        EXPECT_EQ(body.find("secret"), std::string::npos);
        served += body == "inside" ? 1 : 0;
        refused += body == kRefusal ? 1 : 0;
    }
    isOver = true;
    EXPECT_GT(served, 0);
    EXPECT_GT(refused, 0);
}

TEST_F(Resources, OfAnySizeNeedLittleMemory) {
    constexpr std::size_t size = std::size_t{256} << 20;
    Write("large.bin", "");
    fs::resize_file(folder / "large.bin", size);  // without blocks on the disk
    host.Start();
    const std::string request = HttpClient::Request("GET", kRoute + "large.bin", "");
    std::list<HttpClient> slow;
    for (int i = 0; i < 8; ++i) {
        slow.emplace_back(host.HttpPort()).Write(request);
    }
    HttpClient client(host.HttpPort());
    client.Write(request);
    std::string head;
    std::size_t end = std::string::npos;
    while ((end = head.find("\r\n\r\n")) == std::string::npos) {
        head += client.Connection().Receive();
    }
    EXPECT_NE(head.find("\r\nContent-Length: " + std::to_string(size) + "\r\n"), std::string::npos);
    for (std::size_t received = head.size() - end - 4; received < size;) {
        const std::size_t bytes = client.Connection().Receive().size();
        ASSERT_GT(bytes, 0U) << "the end after " << received;
        received += bytes;
    }
#ifndef TEST_SANITIZED  // a sanitizer has a memory of its own
    if (Differences::kMeasuresProcess) {
        EXPECT_LT(host.Process().ResidentBytes(), 40000000U) << "with eight clients in the middle of it";
    }
#endif
    EXPECT_EQ(client.Get("/api/getServerVersion").status, 200) << "on the same connection";
    slow.clear();
    EXPECT_EQ(host.Stop(), 0);
}

}  // namespace
