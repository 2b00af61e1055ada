// What the host must live through, made with the means of one Linux machine. Some need root, some minutes.

#include "simulation/Browser.h"
#include "simulation/Equipment.h"

#include <fstream>
#include <list>
#include <thread>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using nlohmann::json;
using namespace simulation;

/** A disk of one megabyte for the user data; the logs lie elsewhere, as links may have it. */
class SmallDisk : public ::testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0 || mount("tmpfs", Disk().c_str(), "tmpfs", 0, "size=1m") != 0) {
            GTEST_SKIP() << "only root can mount a small disk";
        }
        std::filesystem::create_directory(m_folder.Path() / "log");
        std::filesystem::create_symlink(m_folder.Path() / "log", Disk() / "Log");
        m_host.emplace(HostOptions{.userData = Disk()});
        m_host->Start();
        m_browser.emplace(*m_host);
        Save("old");
        ASSERT_TRUE(WaitUntil([&] { return OnDisk() == "old"; }));
    }

    void TearDown() override {
        m_browser.reset();
        m_host.reset();
        umount2(Disk().c_str(), MNT_DETACH);
    }

    std::filesystem::path Disk() const {
        std::filesystem::create_directories(m_folder.Path() / "disk");
        return m_folder.Path() / "disk";
    }

    json OnDisk() const { return json::parse(m_host->UserFile("layout.json"), nullptr, false); }

    void Save(const json& document) {
        EXPECT_EQ(m_browser->Post("setCentralControlWebLayout", {{"data", document}}).at("code"), 20000);
        EXPECT_EQ(m_browser->Get("getPageLayoutInfo"), document);
    }

    /** Waits until the system log reports the failed save of the layout. */
    void ExpectTold() {
        EXPECT_TRUE(WaitUntil([&] {
            const std::string log = ReadFile(m_folder.Path() / "log" / "System.log");
            return log.find("[Error]") != std::string::npos && log.find("layout.json") != std::string::npos;
        })) << "the failed save is logged";
    }

    TemporaryFolder m_folder;
    std::optional<HostProcess> m_host;
    std::optional<Browser> m_browser;
};

TEST_F(SmallDisk, Full) {
    {
        std::ofstream filler(Disk() / "filler", std::ios::binary);
        while (filler << std::string(4096, 'f') << std::flush) {
        }
    }
    Save(std::string(100000, 'n'));
    ExpectTold();
    EXPECT_EQ(OnDisk(), "old") << "what was saved is not lost";
    std::filesystem::remove(Disk() / "filler");
    Save("new");
    EXPECT_TRUE(WaitUntil([&] { return OnDisk() == "new"; }));
    EXPECT_EQ(m_host->Stop(), 0);
}

TEST_F(SmallDisk, ReadOnly) {
    const auto remount = [this](unsigned long flags) {
        return mount("tmpfs", Disk().c_str(), "tmpfs", MS_REMOUNT | flags, "size=1m") == 0;
    };
    ASSERT_TRUE(WaitUntil([&] { return remount(MS_RDONLY); })) << strerror(errno);  // a save may still flush
    Save("in memory only");
    ExpectTold();
    EXPECT_EQ(OnDisk(), "old");
    ASSERT_TRUE(remount(0));
    Save("new");
    EXPECT_EQ(m_host->Stop(), 0);
    EXPECT_EQ(OnDisk(), "new");
    std::filesystem::remove(Disk() / "Server.lock");
    ASSERT_TRUE(remount(MS_RDONLY));
    m_host->Start();
    EXPECT_NE(m_host->Process().ErrorOutput().find("can't be locked: "), std::string::npos);
    EXPECT_EQ(m_host->Stop(), 0);
}

TEST(Descriptors, UsedUpAndGivenBack) {
    HostProcess host({.descriptorLimit = 80});
    host.Start();
    Browser browser(host);
    {
        std::list<Socket> connections;
        for (int i = 0; i < 200; ++i) {
            connections.push_back(Socket::Connect(i % 4 == 0 ? host.WebSocketPort() : host.HttpPort()));
        }
        ASSERT_TRUE(WaitUntil([&] { return host.Process().Descriptors() >= 80; }));
        const double before = host.Process().ProcessorSeconds();
        std::this_thread::sleep_for(milliseconds(1000));  // the time over which it might spin
        EXPECT_LT(host.Process().ProcessorSeconds() - before, 0.5) << "it waits and does not spin";
        EXPECT_EQ(browser.Get("getMaterialList").size(), 1U) << "who is connected is served";
    }
    EXPECT_EQ(HttpClient(host.HttpPort()).Get("/api/centralControl/getConfigList").status, 200);
    EXPECT_TRUE(WebSocketClient(host.WebSocketPort()).Heartbeat());
    EXPECT_EQ(host.Stop(), 0);
}

TEST(StandardOutput, HeldFromTheStartHoldsUpNeitherClicksNorTheEnd) {
    const TemporaryFolder folder;
    const std::string pipe = (folder.Path() / "pipe").string();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const int reader = open(pipe.c_str(), O_RDWR | O_CLOEXEC);  // keeps it open, and doesn't read
    HostProcess host({.runner = {"sh", "-c", R"(pipe=$1; shift; exec "$@" >"$pipe")", "sh", pipe}});
    host.Start();
    Browser browser(host);
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 1500; ++i) {  // each prints a line; the pipe takes 64 KiB
        ASSERT_EQ(browser.Post("addNetPortInfo", {{"data", 5}}).at("code"), 30101);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
    EXPECT_EQ(host.Stop(), 0);
    close(reader);
}

TEST(Soak, MemoryAndDescriptorsStayWhereTheyWere) {
    const TcpListener live;
    auto dead = std::make_unique<TcpListener>();
    HostProcess host;
    host.Start();
    Browser browser(host);
    ASSERT_EQ(browser.AddNet("Live", "TCP_Client", 0, live.Port()), 20000);
    ASSERT_EQ(browser.AddNet("Dead", "TCP_Client", 0, dead->Port()), 20000);
    ASSERT_EQ(browser.Store({{1, "click", 1, true, "On", "x", 0}, {2, "click", 2, true, "On", "x", 0}}),
              20000);
    dead.reset();
    std::size_t memory = 0;
    std::size_t descriptors = 0;
    for (int click = 0; click < 50000; ++click) {
        if (click == 5000) {
            memory = host.Process().ResidentBytes();
            descriptors = host.Process().Descriptors();
        }
        const bool isDead = click % 10 == 0;
        ASSERT_EQ(browser.Click(isDead ? 2 : 1).at("code"), isDead ? 30201 : 20000) << click;
    }
    EXPECT_LT(host.Process().ResidentBytes(), memory + 5000000);
    EXPECT_TRUE(WaitUntil([&] { return host.Process().Descriptors() <= descriptors + 1; }));
    EXPECT_EQ(live.Received().WaitBytes(45000).size(), 45000U);
}

TEST(Clock, JumpsAnHourBack) {
    if (!std::filesystem::exists(FAKETIME_LIBRARY)) {
        GTEST_SKIP() << "the package faketime is not installed";
    }
    const TemporaryFolder folder;
    const auto clock = folder.Path() / "clock";
    WriteFile(clock, "+0");
    HostProcess host(
        {.environment = {"LD_PRELOAD=" FAKETIME_LIBRARY, "FAKETIME_NO_CACHE=1",
                         "FAKETIME_TIMESTAMP_FILE=" + clock.string(), "FAKETIME_DONT_FAKE_MONOTONIC=1"}});
    const TcpListener live;
    host.Start();
    Browser browser(host);
    ASSERT_EQ(browser.AddNet("Live", "TCP_Client", 0, live.Port()), 20000);
    ASSERT_EQ(browser.Store({{1, "click", 1, true, "On", "x", 0}}), 20000);
    for (const char* shift : {"-1h", "+1d", "-1h"}) {
        WriteFile(clock, shift);
        for (int i = 0; i < 100; ++i) {
            ASSERT_EQ(browser.Click(1).at("code"), 20000) << shift;
        }
        EXPECT_TRUE(browser.Channel().Heartbeat()) << "nobody was taken for idle";
    }
    EXPECT_EQ(host.Stop(), 0);
}

}  // namespace
