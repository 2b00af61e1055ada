// What the host must live through when the system refuses it something, the first time, the second, and so
// on.

#include "simulation/Browser.h"
#include "simulation/Equipment.h"
#include "tests/integration/FailingAllocations.h"

#include <cstring>
#include <list>
#include <sstream>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

using nlohmann::json;
using namespace simulation;

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

/** Tells the preloaded allocator which allocations fail. */
class FailingAllocations {
  public:
    explicit FailingAllocations(std::int64_t count) : m_count(count) {
        WriteFile(m_file, std::string(sizeof(SFailingAllocations), '\0'));
        const int file = open(m_file.c_str(), O_RDWR | O_CLOEXEC);
        m_control = static_cast<SFailingAllocations*>(
            mmap(nullptr, sizeof(SFailingAllocations), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
        close(file);
        ChildProcess symbols({{"nm", "-CS", SERVER_MODULE}, {}, m_folder.Path(), {}});
        WaitUntil([&] { return !symbols.Running(); });
        std::istringstream lines(symbols.Output());
        std::size_t used = 0;
        for (std::string line; std::getline(lines, line) && used + 1 < m_control->spared.size();) {
            if (line.find("json_value::destroy(") != std::string::npos) {
                const std::int64_t begin = std::stoll(line, nullptr, 16);
                m_control->spared[used++] = {begin, begin + std::stoll(line.substr(17), nullptr, 16)};
            }
        }
        EXPECT_GT(used, 0U) << "what must be passed over is not found in " SERVER_MODULE;
    }
    ~FailingAllocations() { munmap(m_control, sizeof *m_control); }
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;

    /** Options of a host whose allocations fail. */
    HostOptions Options() const {
        return {.environment = {"LD_PRELOAD=" FAIL_ALLOCATION_LIBRARY, "FAIL_ALLOCATION=" + m_file.string()}};
    }

    /** Lets the allocations after `left` others fail. */
    void Arm(std::int64_t left) {
        Disarm();
        m_control->reached = 0;
        m_control->left = left;
        m_control->count = m_count;
    }

    /** The same, counted from the start of main. */
    void ArmAtMain(std::int64_t left) {
        Arm(-m_count);
        m_control->leftAtMain = left;
    }

    void Disarm() { m_control->count = 0; }
    bool WasReached() const { return m_control->reached != 0; }

  private:
    std::int64_t m_count;
    TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder.Path() / "allocations";
    SFailingAllocations* m_control = nullptr;
};

/** How many allocations fail in a row: with more than one, what handles the first failure meets another. */
class Allocation : public testing::TestWithParam<std::int64_t> {};

INSTANTIATE_TEST_SUITE_P(InARow, Allocation, testing::Values(1, 2, 5));

TEST_P(Allocation, FailsDuringTheStart) {
    FailingAllocations allocations(GetParam());
    bool reached = true;
    for (std::int64_t left = 0; reached; left += 1 + left / 50) {
        SCOPED_TRACE("after allocation " + std::to_string(left));
        HostProcess host(allocations.Options());
        allocations.ArmAtMain(left);
        host.Launch();
        // A configuration that could not be read leaves the default ports, so look at what the host says.
        EXPECT_TRUE(WaitUntil([&] { return IsUp(host) || !host.Process().Running(); }));
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
    HostProcess host(allocations.Options());
    const TcpListener device;
    const UdpListener udp;
    host.Start();
    Browser browser(host);
    ASSERT_EQ(browser.AddNet("Live", "TCP_Client", 0, device.Port()), 20000);
    const std::vector<Command> commands = {{1, "click", browser.NodeId("Live"), true, "On", "x", 0}};
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

// The connections stay open, so that none can reuse what an earlier one has left.
TEST_P(Allocation, FailsWhileABrowserConnects) {
    FailingAllocations allocations(GetParam());
    HostProcess host(allocations.Options());
    host.Start();
    ASSERT_TRUE(WaitUntil([&] { return IsUp(host); })) << "it answers before its start is over";
    std::list<Socket> open;
    bool reached = true;
    for (std::int64_t left = 0; reached && left < 100; ++left) {
        SCOPED_TRACE("after allocation " + std::to_string(left));
        allocations.Arm(left);
        open.push_back(Socket::Connect(host.HttpPort()));
        reached = WaitUntil([&] { return allocations.WasReached(); }, milliseconds(200));
        allocations.Disarm();
        ASSERT_TRUE(host.Process().Running()) << host.Process().ErrorOutput();
        ASSERT_TRUE(Serves(host)) << "no browser is accepted any more";
    }
    EXPECT_EQ(host.Stop(), 0);
}

TEST_P(Allocation, FailsWhileADeviceConnects) {
    FailingAllocations allocations(GetParam());
    HostProcess host(allocations.Options());
    host.Start();
    Browser browser(host);
    const int port = FreePort();
    ASSERT_EQ(browser.AddNet("Devices", "TCP_Server", port, 0), 20000);
    ASSERT_EQ(browser.Store({{1, "click", browser.NodeId("Devices"), true, "On", "x", 0}}), 20000);
    bool reached = true;
    for (std::int64_t left = 0; reached && left < 100; ++left) {
        SCOPED_TRACE("after allocation " + std::to_string(left));
        allocations.Arm(left);
        const Socket first = Socket::Connect(port);
        reached = WaitUntil([&] { return allocations.WasReached(); }, milliseconds(200));
        allocations.Disarm();
        Socket next = Socket::Connect(port);
        EXPECT_TRUE(WaitUntil([&] {
            browser.Click(1);
            return next.WaitReadable(milliseconds(10));
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
    const TcpListener device;
    const TemporaryFolder folder;
    const std::filesystem::path trace = folder.Path() / "trace";
    bool reached = true;
    int n = 0;
    for (; reached; n += 1 + n / 10) {
        SCOPED_TRACE(call + " at its time " + std::to_string(n + 1));
        HostProcess host({.runner = {"strace", "-D", "-f", "-q", "-o", trace.string(), "-e",
                                     "trace=" + call.substr(0, call.find(':')), "-e",
                                     "inject=" + call + ":when=" + std::to_string(n + 1)}});
        host.Launch();
        EXPECT_TRUE(WaitUntil([&] { return IsUp(host) || !host.Process().Running(); }));
        if (IsUp(host)) {
            try {
                Browser browser(host);
                browser.AddNet("Live", "TCP_Client", 0, device.Port());
                browser.Store({{1, "click", 1, true, "On", "x", 0}});
                browser.Click(1);
            } catch (const TimedOut& silence) {
                ADD_FAILURE() << silence.what();
            } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch)
                // Any answer will do, and a closed connection.
            }
            EXPECT_TRUE(WaitUntil([&] { return Serves(host); }));
        }
        const auto status = host.Stop();
        EXPECT_TRUE(status == 0 || status == 1 || (status == 127 && !IsUp(host)))  // 127: not even loaded
            << status.value_or(-1) << host.Process().ErrorOutput();
        EXPECT_TRUE(WaitUntil([&] { return IsWhole(ReadFile(trace)); }));
        reached = ReadFile(trace).find("(INJECTED)") != std::string::npos;
    }
    EXPECT_GT(n, 1) << "strace does not work here, or the host makes no such call";
}

// The real place of a resource can't be determined then.
TEST(FolderOfResources, ThatCantBeOpenedGivesNothing) {
    HostProcess host({.runner = {"sh", "-c",
                                 "exec strace -D -f -q -o \"$HOME/trace\" -P \"$HOME/installation/Resource\" "
                                 "-e trace=openat -e inject=openat:error=EMFILE \"$@\"",
                                 "sh"},
                      .ownInstallation = true});
    WriteFile(host.Installation() / "Resource/lamp.png", "lamp");
    host.Start();
    const auto reply = HttpClient(host.HttpPort()).Get("/api/getResource/lamp.png");
    EXPECT_EQ(reply.body, R"({"code":30101,"message":""})");
    EXPECT_EQ(host.Stop(), 0);
    EXPECT_NE(ReadFile(host.Home() / "trace").find("(INJECTED)"), std::string::npos);
}

}  // namespace
