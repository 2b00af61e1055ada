// What the host must live through when the system refuses it something, the first time, the second, and so
// on.

#include "simulation/Browser.h"
#include "simulation/Equipment.h"

#include <array>
#include <cstring>
#include <fstream>
#include <list>
#include <sstream>

#include <gtest/gtest.h>

namespace {

using nlohmann::json;
using simulation::Browser;
using simulation::HostOptions;
using simulation::HostProcess;
using simulation::HttpClient;

bool Serves(HostProcess& host) {
    try {
        return HttpClient(host.HttpPort()).Get("/index.html").status == 200;
    } catch (const std::exception&) {
        return false;
    }
}

bool IsUp(HostProcess& host) {
    return host.Process().Output().find("is running.") != std::string::npos;
}

/** The control file of the preloaded allocator, see fail_allocation_linux.cpp. */
class FailingAllocations {
  public:
    explicit FailingAllocations(std::int64_t count) : m_count(count) {
        simulation::ChildProcess symbols({{"nm", "-CS", SERVER_MODULE}, {}, m_folder.Path(), {}});
        simulation::WaitUntil([&] { return !symbols.Running(); });
        std::istringstream lines(symbols.Output());
        std::size_t used = kFirstSpared;
        for (std::string line; std::getline(lines, line) && used + 2 < m_numbers.size();) {
            if (line.find("json_value::destroy(") != std::string::npos) {
                const std::int64_t begin = std::stoll(line, nullptr, 16);
                m_numbers[used++] = begin;
                m_numbers[used++] = begin + std::stoll(line.substr(17), nullptr, 16);
            }
        }
        EXPECT_GT(used, kFirstSpared) << "what must be passed over is not found in " SERVER_MODULE;
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
    static constexpr std::size_t kFirstSpared = 4;

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
    std::array<std::int64_t, kFirstSpared + 64> m_numbers{};
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
        EXPECT_TRUE(simulation::WaitUntil([&] { return IsUp(host) || !host.Process().Running(); }));
        reached = allocations.WasReached();
        EXPECT_TRUE(IsUp(host) || !host.Process().ErrorOutput().empty());
        const bool wasUp = IsUp(host);
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

TEST_P(Allocation, FailsWhileADeviceConnects) {
    FailingAllocations allocations(GetParam());
    HostOptions options;
    options.environment = allocations.Environment();
    HostProcess host(options);
    host.Start();
    Browser browser(host);
    const int port = simulation::FreePort();
    ASSERT_EQ(browser.AddNet("Devices", "TCP_Server", port, 0), 20000);
    ASSERT_EQ(browser.Store({{1, "click", browser.NodeId("Devices"), true, "On", "x", 0}}), 20000);
    bool reached = true;
    for (std::int64_t left = 0; reached && left < 100; ++left) {
        SCOPED_TRACE("after allocation " + std::to_string(left));
        allocations.Arm(left);
        const simulation::Socket first = simulation::Socket::Connect(port);
        reached =
            simulation::WaitUntil([&] { return allocations.WasReached(); }, simulation::milliseconds(200));
        allocations.Disarm();
        simulation::Socket next = simulation::Socket::Connect(port);
        EXPECT_TRUE(simulation::WaitUntil([&] {
            browser.Click(1);
            return next.WaitReadable(simulation::milliseconds(10));
        })) << "no device is accepted any more";
    }
    EXPECT_EQ(host.Stop(), 0);
}

/** Whether strace has written the end of the process, which comes after those of its threads. */
bool IsWhole(const std::string& trace) {
    const std::string process = trace.substr(0, trace.find(' ') + 1);
    std::istringstream lines(trace);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(process) && line.find(" +++ ") != std::string::npos) {
            return true;
        }
    }
    return false;
}

/** A system call that fails in each thread once, at its n-th time, and the error: as strace writes it. */
class SystemCall : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Each, SystemCall,
                         testing::Values("accept:error=ENOMEM", "clone3:error=EAGAIN",
                                         "connect:error=EADDRNOTAVAIL", "epoll_create1:error=EMFILE",
                                         "eventfd2:error=EMFILE", "fsync:error=EIO", "mkdir:error=EACCES",
                                         "openat:error=EMFILE", "recvfrom:error=ECONNRESET",
                                         "rename:error=EIO", "sendmsg:error=ENOBUFS",
                                         "setsockopt:error=ENOBUFS", "socket:error=EMFILE",
                                         "timerfd_create:error=EMFILE"),
                         [](const auto& row) { return std::string(row.param, std::strchr(row.param, ':')); });

TEST_P(SystemCall, FailsOnce) {
    const std::string call = GetParam();
    const simulation::TcpListener device;
    const simulation::TemporaryFolder folder;
    const std::filesystem::path trace = folder.Path() / "trace";
    bool reached = true;
    int n = 0;
    for (; reached; n += 1 + n / 10) {
        SCOPED_TRACE(call + " at its time " + std::to_string(n + 1));
        HostOptions options;
        options.runner = {"strace", "-D", "-f", "-q", "-o", trace.string()};
        for (const std::string& filter : {"trace=" + call.substr(0, call.find(':')),
                                          "inject=" + call + ":when=" + std::to_string(n + 1)}) {
            options.runner.insert(options.runner.end(), {"-e", filter});
        }
        HostProcess host(options);
        host.Launch();
        EXPECT_TRUE(simulation::WaitUntil([&] { return IsUp(host) || !host.Process().Running(); }));
        if (IsUp(host)) {
            try {
                Browser browser(host);
                browser.AddNet("Live", "TCP_Client", 0, device.Port());
                browser.Store({{1, "click", 1, true, "On", "x", 0}});
                browser.Click(1);
            } catch (const simulation::TimedOut& silence) {
                ADD_FAILURE() << silence.what();
            } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch)
                // Any answer will do, and a closed connection.
            }
            EXPECT_TRUE(simulation::WaitUntil([&] { return Serves(host); }));
        }
        const auto status = host.Stop();
        EXPECT_TRUE(status == 0 || status == 1 || (status == 127 && !IsUp(host)))  // 127: not even loaded
            << status.value_or(-1) << host.Process().ErrorOutput();
        EXPECT_TRUE(simulation::WaitUntil([&] { return IsWhole(simulation::ReadFile(trace)); }));
        reached = simulation::ReadFile(trace).find("(INJECTED)") != std::string::npos;
    }
    EXPECT_GT(n, 1) << "strace does not work here, or the host makes no such call";
}

// The real place of a resource can't be determined then.
TEST(FolderOfResources, ThatCantBeOpenedGivesNothing) {
    HostOptions options;
    options.ownInstallation = true;
    options.runner = {"sh", "-c",
                      "exec strace -D -f -q -o \"$HOME/trace\" -P \"$HOME/installation/Resource\" "
                      "-e trace=openat -e inject=openat:error=EMFILE \"$@\"",
                      "sh"};
    HostProcess host(options);
    simulation::WriteFile(host.Installation() / "Resource/lamp.png", "lamp");
    host.Start();
    const auto reply = HttpClient(host.HttpPort()).Get("/api/getResource/lamp.png");
    EXPECT_EQ(reply.body, R"({"code":30101,"message":""})");
    EXPECT_EQ(host.Stop(), 0);
    EXPECT_NE(simulation::ReadFile(host.Home() / "trace").find("(INJECTED)"), std::string::npos);
}

}  // namespace
