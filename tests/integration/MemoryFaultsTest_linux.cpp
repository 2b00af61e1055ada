// Memory: slow readers, large documents, and a limit that the system sets. They take some seconds.

#include "simulation/Browser.h"

#include <list>
#include <random>

#include <gtest/gtest.h>

namespace {

using nlohmann::json;
using namespace simulation;

constexpr std::size_t kMegabyte = std::size_t{1} << 20;
constexpr std::size_t kMayRemain = 50'000'000;

const std::string kSetter = "/api/centralControl/setCentralControlWebLayout";
const std::string kGetter = "/api/centralControl/getPageLayoutInfo";

std::string Repeated(const std::string& part, std::size_t bytes) {
    std::string text = R"({"data":[)";
    text.reserve(bytes + 100);
    while (text.size() < bytes) {
        text += part;
    }
    return text + "0]}";
}

class Memory : public ::testing::Test {
  protected:
    void SetUp() override {
#ifdef TEST_SANITIZED
        GTEST_SKIP() << "sanitizers keep memory of their own";
#endif
    }

    void Start(HostOptions options = {}) {
        m_host.emplace(std::move(options));
        m_host->Start();
        m_browser.emplace(*m_host);
    }

    std::size_t Resident() {
        return m_host->Process().ResidentBytes();
    }

    /** Waits until no more memory is in use than may remain of a load. */
    void ExpectBackTo(std::size_t before) {
        EXPECT_TRUE(WaitUntil([&] { return Resident() < before + kMayRemain; }))
            << before / kMegabyte << " MB before, " << Resident() / kMegabyte << " MB now";
    }

    std::optional<HostProcess> m_host;
    std::optional<Browser> m_browser;
};

TEST_F(Memory, StaysFlatWhileClientsDoNotRead) {
    Start();
    const std::string layout = Repeated('"' + std::string(100'000, 't') + "\",", 20 * kMegabyte);
    ASSERT_EQ(m_browser->Http().Post(kSetter, layout).status, 200);
    ASSERT_GT(m_browser->Http().Get(kGetter).body.size(), 20 * kMegabyte);
    const std::size_t before = Resident();
    {
        std::list<Socket> deaf;
        for (int i = 0; i < 100; ++i) {
            deaf.push_back(Socket::Connect(m_host->HttpPort()));
            deaf.back().Send(HttpClient::Request("GET", kGetter, ""));
            ASSERT_TRUE(deaf.back().WaitReadable(kMaxTestWait));
        }
        EXPECT_LT(Resident(), before + kMayRemain);
    }
    ExpectBackTo(before);
}

TEST_F(Memory, GoesBackAfterLargeDocuments) {
    Start();
    const std::string part = R"({"id":123456,"x":10.5,"name":"abc","style":{"color":"#ffffff"}},)";
    ASSERT_EQ(m_browser->Http().Post(kSetter, Repeated(part, 1000)).status, 200);
    ASSERT_EQ(m_browser->Http().Get(kGetter).status, 200);
    const std::size_t before = Resident();
    for (const char* each : {part.c_str(), "[],", R"({"":0},)"}) {
        ASSERT_EQ(m_browser->Http().Post(kSetter, Repeated(each, 8 * kMegabyte)).status, 200) << each;
        ASSERT_EQ(m_browser->Http().Get(kGetter).status, 200);
    }
    ASSERT_EQ(m_browser->Http().Post(kSetter, Repeated(part, 1000)).status, 200);
    ExpectBackTo(before);
}

TEST_F(Memory, IsNotTakenForWhatCanOnlyBeRefused) {
    Start();
    const std::size_t before = Resident();
    HttpClient click(m_host->HttpPort());
    std::list<HttpClient> senders;
    for (int i = 0; i < 4; ++i) {
        senders.emplace_back(m_host->HttpPort(), "127.0.0.2");  // where no page is open
        senders.back().Write(HttpClient::Request("POST", kSetter, Repeated("[],", 60 * kMegabyte)));
        EXPECT_LT(Resident(), before + kMayRemain);
        EXPECT_EQ(click.Get("/api/getServerVersion").status, 200);
    }
    for (HttpClient& sender : senders) {
        EXPECT_EQ(json::parse(sender.ReadReply().body).at("code"), 30100);
    }
    const HttpReply reply = m_browser->Http().Post(kSetter, Repeated("[],", 255 * kMegabyte));
    EXPECT_EQ(reply.status, 503) << "these would become gigabytes";
    EXPECT_NE(reply.Header("Retry-After"), "");
    EXPECT_EQ(m_browser->Post("setCentralControlWebLayout", {{"data", "small"}}).at("code"), 20000);
    ExpectBackTo(before);
}

TEST_F(Memory, RunsOutWithoutTheEndOfTheProcess) {
    Start({.runner = {"prlimit", "--as=" + std::to_string(700 * kMegabyte)}});
    std::mt19937 random(20241121);  // a fixed seed: each run sends the same
    const char* const parts[] = {"[],", R"({"":0},)", "[[1,2],[3]],", R"({"a":[{"b":"c"}]},)"};
    int refused = 0;
    for (int i = 0; i < 24; ++i) {
        const std::size_t bytes = (3 + random() % 6) * kMegabyte;
        const HttpReply reply = m_browser->Http().Post(kSetter, Repeated(parts[i % 4], bytes));
        refused += reply.status == 503 || reply.body.find("30101") != std::string::npos ? 1 : 0;
        ASSERT_TRUE(m_host->Process().Running()) << m_host->Process().ErrorOutput();
    }
    EXPECT_GT(refused, 0) << "the limit is too wide to try anything";
    EXPECT_EQ(m_browser->Post("setCentralControlWebLayout", {{"data", "small"}}).at("code"), 20000);
    EXPECT_EQ(m_host->Stop(), 0);
}

}  // namespace
