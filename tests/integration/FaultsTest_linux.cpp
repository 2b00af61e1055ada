// What the host must live through, made with the means of one Linux machine. Some need root, some minutes.

#include "simulation/Browser.h"
#include "simulation/Equipment.h"

#include <array>
#include <cstring>
#include <fstream>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <unistd.h>

namespace {

using nlohmann::json;
using simulation::Browser;
using simulation::HostOptions;
using simulation::HostProcess;
using simulation::HttpClient;
using simulation::milliseconds;
using simulation::Socket;

/** A disk of one megabyte for the user data; the logs lie elsewhere, as links may have it. */
class SmallDisk : public ::testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0 || mount("tmpfs", Disk().c_str(), "tmpfs", 0, "size=1m") != 0) {
            GTEST_SKIP() << "only root can mount a small disk";
        }
        std::filesystem::create_directory(m_folder.Path() / "log");
        std::filesystem::create_symlink(m_folder.Path() / "log", Disk() / "Log");
        HostOptions options;
        options.userData = Disk();
        m_host.emplace(options);
        m_host->Start();
        m_browser.emplace(*m_host);
        Save("old");
        ASSERT_TRUE(simulation::WaitUntil([&] { return OnDisk() == "old"; }));
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

    /** Waits until the failed save of the layout was told in the system log. */
    void ExpectTold() {
        EXPECT_TRUE(simulation::WaitUntil([&] {
            const std::string log = simulation::ReadFile(m_folder.Path() / "log" / "System.log");
            return log.find("[Error]") != std::string::npos && log.find("layout.json") != std::string::npos;
        })) << "the failed save is told";
    }

    simulation::TemporaryFolder m_folder;
    std::optional<HostProcess> m_host;
    std::optional<Browser> m_browser;
};

TEST_F(SmallDisk, Full) {
    {
        std::ofstream filler(Disk() / "filler", std::ios::binary);
        while (filler << std::string(4096, 'f') << std::flush) {
        }
    }
    const std::string large(100000, 'n');
    Save(large);
    ExpectTold();
    EXPECT_EQ(OnDisk(), "old") << "what was saved is not lost";
    std::filesystem::remove(Disk() / "filler");
    Save("new");
    EXPECT_TRUE(simulation::WaitUntil([&] { return OnDisk() == "new"; }));
    EXPECT_EQ(m_host->Stop(), 0);
}

TEST_F(SmallDisk, ReadOnly) {
    ASSERT_EQ(mount("tmpfs", Disk().c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, "size=1m"), 0)
        << strerror(errno);
    Save("in memory only");
    ExpectTold();
    EXPECT_EQ(OnDisk(), "old");
    ASSERT_EQ(mount("tmpfs", Disk().c_str(), "tmpfs", MS_REMOUNT, "size=1m"), 0);
    Save("new");
    EXPECT_EQ(m_host->Stop(), 0);
    EXPECT_EQ(OnDisk(), "new");
}

TEST(Descriptors, UsedUpAndGivenBack) {
    HostOptions options;
    options.descriptorLimit = 80;
    HostProcess host(options);
    host.Start();
    Browser browser(host);
    {
        std::list<Socket> connections;
        for (int i = 0; i < 200; ++i) {
            connections.push_back(Socket::Connect(i % 4 == 0 ? host.WebSocketPort() : host.HttpPort()));
        }
        ASSERT_TRUE(simulation::WaitUntil([&] { return host.Process().Descriptors() >= 80; }));
        const double before = host.Process().ProcessorSeconds();
        std::this_thread::sleep_for(milliseconds(1000));  // the time over which it might spin
        EXPECT_LT(host.Process().ProcessorSeconds() - before, 0.5) << "it waits and does not spin";
        EXPECT_EQ(browser.Get("getMaterialList").size(), 1U) << "who is connected is served";
    }
    EXPECT_EQ(HttpClient(host.HttpPort()).Get("/api/centralControl/getConfigList").status, 200);
    EXPECT_TRUE(simulation::WebSocketClient(host.WebSocketPort()).Heartbeat());
    EXPECT_EQ(host.Stop(), 0);
}

TEST(Soak, MemoryAndDescriptorsStayWhereTheyWere) {
    const simulation::TcpListener live;
    auto dead = std::make_unique<simulation::TcpListener>();
    HostProcess host;
    host.Start();
    Browser browser(host);
    ASSERT_EQ(browser.AddNet("Live", "TCP_Client", 0, live.Port()), 20000);
    ASSERT_EQ(browser.AddNet("Dead", "TCP_Client", 0, dead->Port()), 20000);
    ASSERT_EQ(browser.Store({{1, "click", browser.NodeId("Live"), true, "On", "x", 0},
                             {2, "click", browser.NodeId("Dead"), true, "On", "x", 0}}),
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
    EXPECT_TRUE(simulation::WaitUntil([&] { return host.Process().Descriptors() <= descriptors + 1; }));
    EXPECT_EQ(live.Received().WaitBytes(45000).size(), 45000U);
}

TEST(Clock, JumpsAnHourBack) {
    if (!std::filesystem::exists(FAKETIME_LIBRARY)) {
        GTEST_SKIP() << "the package faketime is not installed";
    }
    const simulation::TemporaryFolder folder;
    const auto clock = folder.Path() / "clock";
    simulation::WriteFile(clock, "+0");
    HostOptions options;
    options.environment = {"LD_PRELOAD=" FAKETIME_LIBRARY, "FAKETIME_TIMESTAMP_FILE=" + clock.string(),
                           "FAKETIME_NO_CACHE=1", "FAKETIME_DONT_FAKE_MONOTONIC=1"};
    HostProcess host(options);
    const simulation::TcpListener live;
    host.Start();
    Browser browser(host);
    ASSERT_EQ(browser.AddNet("Live", "TCP_Client", 0, live.Port()), 20000);
    ASSERT_EQ(browser.Store({{1, "click", browser.NodeId("Live"), true, "On", "x", 0}}), 20000);
    for (const char* shift : {"-1h", "+1d", "-1h"}) {
        simulation::WriteFile(clock, shift);
        for (int i = 0; i < 100; ++i) {
            ASSERT_EQ(browser.Click(1).at("code"), 20000) << shift;
        }
        EXPECT_TRUE(browser.Channel().Heartbeat()) << "nobody was taken for idle";
        EXPECT_EQ(HttpClient(host.HttpPort()).Get("/api/centralControl/getMaterialList").status, 200);
    }
    EXPECT_EQ(host.Stop(), 0);
    EXPECT_NE(host.UserFile("componentConfig.json"), "");
}

/** The control file of the preloaded allocator, see fail_allocation_linux.cpp. */
class FailingAllocations {
  public:
    explicit FailingAllocations(std::int64_t count) : m_count(count) {
        simulation::ChildProcess symbols({{"nm", "-CS", SERVER_MODULE}, {}, m_folder.Path(), {}});
        simulation::WaitUntil([&] { return !symbols.Running(); });
        std::istringstream lines(symbols.Output());
        std::size_t used = g_firstSpared;
        for (std::string line; std::getline(lines, line) && used + 2 < m_numbers.size();) {
            if (line.find("json_value::destroy(") != std::string::npos) {
                const std::int64_t begin = std::stoll(line, nullptr, 16);
                m_numbers[used++] = begin;
                m_numbers[used++] = begin + std::stoll(line.substr(17), nullptr, 16);
            }
        }
        EXPECT_GT(used, g_firstSpared) << "what must be passed over is not found in " SERVER_MODULE;
        Write(0, 0, 0);
    }

    std::vector<std::string> Environment() const {
        return {"LD_PRELOAD=" FAIL_ALLOCATION_LIBRARY, "FAIL_ALLOCATION=" + m_file.string()};
    }

    /** Lets the allocations after `left` others fail. */
    void Arm(std::int64_t left) { Write(left, m_count, 0); }

    /** The same, counted from the start of main. */
    void ArmAtMain(std::int64_t left) { Write(-m_count, m_count, left); }

    void Disarm() { Write(0, 0, 0); }

    bool WasReached() const {
        std::int64_t reached = 0;
        std::memcpy(&reached, simulation::ReadFile(m_file).data() + 2 * sizeof reached, sizeof reached);
        return reached > 0;
    }

  private:
    static constexpr std::size_t g_firstSpared = 4;

    void Write(std::int64_t left, std::int64_t count, std::int64_t leftAtMain) {
        m_numbers[0] = left;
        m_numbers[1] = count;
        m_numbers[2] = 0;
        m_numbers[3] = leftAtMain;
        std::fstream file(m_file, std::ios::binary | std::ios::in | std::ios::out);
        if (!file) {
            file.open(m_file, std::ios::binary | std::ios::out);
        }
        file.write(static_cast<const char*>(static_cast<const void*>(m_numbers.data())), sizeof m_numbers);
    }

    std::int64_t m_count;
    simulation::TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder.Path() / "allocations";
    std::array<std::int64_t, g_firstSpared + 64> m_numbers{};
};

/** How many allocations fail in a row: with more than one, what handles the first failure meets another. */
class Allocation : public testing::TestWithParam<std::int64_t> {};

INSTANTIATE_TEST_SUITE_P(InARow, Allocation, testing::Values(1, 2, 5));

TEST_P(Allocation, FailsDuringTheStart) {
    FailingAllocations allocations(GetParam());
    HostOptions options;
    options.environment = allocations.Environment();
    bool reached = true;
    for (std::int64_t left = 0; reached; left += 1 + left / 50) {
        SCOPED_TRACE("after allocation " + std::to_string(left));
        HostProcess host(options);
        allocations.ArmAtMain(left);
        host.Launch();
        // A configuration that could not be read leaves the default ports, so look at what the host says.
        const auto isUp = [&] { return host.Process().Output().find("is running.") != std::string::npos; };
        EXPECT_TRUE(simulation::WaitUntil([&] { return isUp() || !host.Process().Running(); }));
        reached = allocations.WasReached();
        EXPECT_TRUE(isUp() || !host.Process().ErrorOutput().empty());
        const bool wasUp = isUp();
        EXPECT_LE(host.Stop(), 1) << host.Process().ErrorOutput();  // no signal has ended it
        EXPECT_FALSE(wasUp && host.UserFile("Log/Server.log").find("Failed to start") != std::string::npos)
            << "what is left of a failed start must not pass for a server";
    }
}

TEST_P(Allocation, FailsDuringEachRequest) {
    FailingAllocations allocations(GetParam());
    HostOptions options;
    options.environment = allocations.Environment();
    HostProcess host(options);
    const simulation::TcpListener device;
    const simulation::UdpListener udp;
    host.Start();
    Browser browser(host);
    ASSERT_EQ(browser.AddNet("Live", "TCP_Client", 0, device.Port()), 20000);
    const std::vector<simulation::Command> commands = {
        {1, "click", browser.NodeId("Live"), true, "On", "x", 0}};
    const std::vector<std::pair<std::string, json>> posts = {
        {"setCentralControlWebLayout", {{"data", {1, 2, 3}}}},
        {"updateComponentInteraction", {{"data", Browser::Interactions(commands)}}},
        {"useComponent", Browser::ClickBody(1)},
        {"addNetPortInfo", {{"data", {{"info", Browser::NetInfo("U", "UDP", 0, udp.Port())}}}}},
        {"editNetPortInfo", {{"data", {{"nodeId", 50}, {"info", Browser::NetInfo("E", "UDP", 0, 9)}}}}},
        {"deleteInterfaceConfig", {{"nodeId", 50}}},
    };
    std::list<std::string> requests = {HttpClient::Request("GET", "/api/centralControl/getConfigList", ""),
                                       HttpClient::Request("GET", "/index.html", "")};
    for (const auto& [route, body] : posts) {
        requests.push_back(HttpClient::Request("POST", "/api/centralControl/" + route, body.dump()));
    }
    for (const std::string& request : requests) {
        bool reached = true;
        for (std::int64_t left = 0; reached && left < 1000; ++left) {
            SCOPED_TRACE("after allocation " + std::to_string(left) + " of " + request);
            allocations.Arm(left);
            // Any answer will do, and a closed connection; not silence.
            EXPECT_NO_THROW(HttpClient(host.HttpPort()).Exchange(request));
            reached = allocations.WasReached();
            allocations.Disarm();
            ASSERT_TRUE(host.Process().Running()) << host.Process().ErrorOutput();
        }
    }
    ASSERT_EQ(browser.Store(commands), 20000);
    EXPECT_EQ(browser.Click(1).at("code"), 20000);
    EXPECT_TRUE(browser.Channel().Heartbeat());
    EXPECT_EQ(host.Stop(), 0);
}

}  // namespace
