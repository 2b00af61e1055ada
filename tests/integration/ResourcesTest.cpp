// The folder of resources: nothing from outside of it, and large files without the memory for them.

#include "simulation/Browser.h"
#include "simulation/Machine.h"
#include "simulation/TableText.h"

#include <atomic>
#include <list>
#include <set>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

namespace {

using nlohmann::json;
using simulation::HostOptions;
using simulation::HostProcess;
using simulation::HttpClient;
using simulation::HttpReply;
namespace fs = std::filesystem;

const std::string kRoute = "/api/getResource/";
constexpr std::string_view kRefusal = R"({"code":30101,"message":""})";

HostOptions OwnInstallation() {
    HostOptions options;
    options.ownInstallation = true;
    return options;
}

class Resources : public ::testing::Test {
  protected:
    Resources() : host(OwnInstallation()), folder(host.Installation() / "Resource") {}

    void Write(const std::string& name, std::string_view text) { simulation::WriteFile(folder / name, text); }
    bool Link(const std::string& name, const fs::path& to) { return simulation::MakeLink(to, folder / name); }

    HostProcess host;
    const fs::path folder;
};

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
    const std::size_t at = text.find(what);
    return at == std::string::npos ? text : text.replace(at, what.size(), by);
}

/** A name of the table: {installation} is its path, percent-encoded. */
std::string NameInRequest(const std::string& name, const fs::path& installation) {
    std::string encoded;
    for (const fs::path& element : installation.relative_path()) {
        encoded += "%2F" + element.string();
    }
    return simulation::Expanded(Replaced(name, "{installation}", encoded));
}

/** What the operation log holds of each path: the texts of its records, one behind the other. */
std::map<std::string, std::string> Outcomes(const std::string& log) {
    std::map<std::string, std::string> outcomes;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t begin = line.find("][" + kRoute);
        const std::size_t end = line.find("] ", begin);
        if (begin != std::string::npos) {
            outcomes[line.substr(begin + 2, end - begin - 2)] += line.substr(end + 2);
        }
    }
    return outcomes;
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
    for (const auto& [name, text] : std::map<std::string, std::string>{{"lamp.png", "lamp"},
                                                                       {"sub/deep.txt", "deep"},
                                                                       {"a b.txt", "blank"},
                                                                       {"LAMP.PNG", "upper"},
                                                                       {"noend", "noend"},
                                                                       {"end.", "end"},
                                                                       {"灯.txt", "lantern"},
                                                                       {"../secret.txt", "secret"},
                                                                       {"../Resource-other/x.txt", "secret"},
                                                                       {"../sub/deep.txt", "secret"}}) {
        Write(name, text);
    }
    if (simulation::Differences::kNamesAsWritten) {
        Write("NUL.txt", "a device elsewhere");
        Write("com1/deep.txt", "below a device elsewhere");
    }
    std::set<std::string> missing;  // links that this system can't make
    for (const auto& [name, to] :
         std::map<std::string, fs::path>{{"inside", "sub/deep.txt"},
                                         {"insidechain", "inside"},
                                         {"outandback", "../Resource/lamp.png"},
                                         {"self", "."},
                                         {"out", "../secret.txt"},
                                         {"absolute", host.Installation() / "secret.txt"},
                                         {"chain", "chain2"},
                                         {"chain2", "sub/../chain3"},
                                         {"chain3", "up/secret.txt"},
                                         {"up", ".."},
                                         {"loop", "loop"},
                                         {"dangling", "../missing.txt"},
                                         {"null", "/dev/null"}}) {
        if (!Link(name, to)) {
            missing.insert(name);
        }
    }
    host.Start();
    HttpClient client(host.HttpPort());
    std::map<std::string, std::string> expected;
    for (const json& row : json::parse(simulation::ReadFile(fs::path(TEST_TABLES) / "resource_names.json"))) {
        const std::string name = NameInRequest(row[0], host.Installation());
        if (missing.contains(name.substr(0, name.find('%'))) ||
            (!simulation::Differences::kNamesAsWritten && (row[1] != "refused" || IsReadOtherwise(name)))) {
            continue;
        }
        ExpectReply(name, client.Get(kRoute + name), row[1], row[2]);
        expected[kRoute + name] = row[3];
    }
    EXPECT_EQ(host.Stop(), 0) << host.Process().ErrorOutput();
    const auto outcomes = Outcomes(host.UserFile("Log/Operation.log"));
    for (const auto& [path, text] : expected) {
        const auto found = outcomes.find(path);
        const std::string outcome = found == outcomes.end() ? "" : found->second;
        const std::size_t fixed = std::min(text.find('*'), std::max(text.size(), outcome.size()));
        EXPECT_EQ(outcome.substr(0, fixed), text.substr(0, fixed)) << path.substr(0, 200);
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
    std::atomic<int> served = 0;
    std::atomic<int> refused = 0;
    {
        std::list<std::jthread> clients;
        for (int i = 0; i < 2; ++i) {
            clients.emplace_back([&] {
                HttpClient client(host.HttpPort());
                for (int request = 0; request < 3000; ++request) {
                    const HttpReply reply = client.Get(kRoute + "folder%2Ffile.txt");
                    EXPECT_EQ(reply.body.find("secret"), std::string::npos);
                    served += reply.body == "inside" ? 1 : 0;
                    refused += reply.body == kRefusal ? 1 : 0;
                }
            });
        }
    }
    isOver = true;
    EXPECT_GT(served, 0);
    EXPECT_GT(refused, 0);
}

TEST_F(Resources, OfAnySizeNeedLittleMemory) {
    constexpr std::size_t size = std::size_t{1} << 30;
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
    std::size_t received = 0;
    for (std::size_t end = std::string::npos; end == std::string::npos || received < end + 4 + size;) {
        const std::string bytes = client.Connection().Receive();
        ASSERT_FALSE(bytes.empty()) << received << " bytes of the reply";
        received += bytes.size();
        head += end == std::string::npos ? bytes : "";
        end = head.find("\r\n\r\n");
    }
    EXPECT_EQ(received, head.find("\r\n\r\n") + 4 + size);
    EXPECT_NE(head.find("\r\nContent-Length: 1073741824\r\n"), std::string::npos);
#ifndef TEST_SANITIZED  // a sanitizer has a memory of its own
    if (simulation::Differences::kMeasuresProcess) {
        EXPECT_LT(host.Process().ResidentBytes(), 40000000U) << "with eight clients in the middle of it";
    }
#endif
    EXPECT_EQ(client.Get("/api/getServerVersion").status, 200) << "on the same connection";
    slow.clear();
    EXPECT_EQ(host.Stop(), 0);
}

}  // namespace
