// Calls of the system that fail or wait: connections that are gone before they are accepted, and a disk that
// stands still. The linker leads the library's calls here (--wrap).
#include "simulation/Wait.h"
#include "tests/http/HttpFixture.h"

#include <atomic>
#include <cerrno>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/uio.h>

namespace {

enum class Disk { Runs, IsCold, StandsStill };

std::atomic<Disk> g_disk = Disk::Runs;
std::atomic<int> g_stuck = 0;
std::atomic<int> g_gone = 0;  // connections that the next calls of accept find to be gone

// What can't be answered from memory waits until the disk runs again.
void WaitForDisk() {
    ++g_stuck;
    simulation::WaitUntil([] { return g_disk != Disk::StandsStill; });
    --g_stuck;
}

}  // namespace

// The linker refuses hidden ones, since the shared libraries of the program ask for them too.
#pragma GCC visibility push(default)
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the names are the linker's
int __real_accept(int listener, sockaddr* peer, socklen_t* size);
ssize_t __real_pread(int file, void* to, size_t size, off_t offset);
ssize_t __real_preadv2(int file, const iovec* parts, int count, off_t offset, int flags);
ssize_t __real_sendfile(int socket, int file, off_t* offset, size_t size);
long __real_syscall(long number, long folder, const void* path, const open_how* how, size_t size);

int __wrap_accept(int listener, sockaddr* peer, socklen_t* size) {
    if (g_gone > 0) {
        --g_gone;
        errno = ECONNABORTED;
        return -1;
    }
    return __real_accept(listener, peer, size);
}

ssize_t __wrap_pread(int file, void* to, size_t size, off_t offset) {
    WaitForDisk();
    return __real_pread(file, to, size, offset);
}

ssize_t __wrap_preadv2(int file, const iovec* parts, int count, off_t offset, int flags) {
    if (g_disk != Disk::Runs) {
        errno = EAGAIN;
        return -1;
    }
    return __real_preadv2(file, parts, count, offset, flags);
}

ssize_t __wrap_sendfile(int socket, int file, off_t* offset, size_t size) {
    WaitForDisk();
    return __real_sendfile(socket, file, offset, size);
}

long __wrap_syscall(long number, long folder, const void* path, const open_how* how, size_t size) {
    if (number == SYS_openat2) {
        if (g_disk != Disk::Runs && (how->resolve & RESOLVE_CACHED) != 0) {
            errno = EAGAIN;
            return -1;
        }
        WaitForDisk();
    }
    return __real_syscall(number, folder, path, how, size);
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
}
#pragma GCC visibility pop

namespace {

TEST_F(HttpTest, AConnectionThatIsGoneHoldsUpNoneBehindIt) {
    service.GET("/", Says("served"));
    Run();
    for (const int gone : {1, 3}) {
        g_gone = gone;
        EXPECT_EQ(Connect().Ask(Get("/")).body, "served") << gone;
        EXPECT_EQ(g_gone, 0);
    }
}

class StalledDiskTest : public HttpTest {
  protected:
    void SetUp() override {
        Write("page.txt", "page");
        Write("page.html.br", "pressed");
        Write("page.html", "<html>");
        Write("large.bin", large);
        service.Static("/", folder.Path().string().c_str());
        service.GET("/quick", Says("quick"));
        service.GET("/handed", [file = Path("large.bin")](HttpRequest*, HttpResponse* response) {
            return response->File(file.c_str());
        });
        server.worker_threads = 1;
        Run();
    }

    void TearDown() override {
        g_disk = Disk::Runs;
        HttpTest::TearDown();
    }

    static bool WaitForStuck(int count) {
        return simulation::WaitUntil([&] { return g_stuck == count; });
    }

    const std::string large = std::string(std::size_t{16} << 20U, 'x') + "end";
};

TEST_F(StalledDiskTest, HoldsUpNothingButFiles) {
    g_disk = Disk::StandsStill;
    std::vector<Client> readers;
    for (int i = 0; i < 6; ++i) {
        readers.push_back(Connect());
        readers.back().Send(Get("/page.txt"));
    }
    EXPECT_TRUE(WaitForStuck(4));
    Client other = Connect();
    EXPECT_EQ("quick", other.Ask(Get("/quick")).body);
    g_disk = Disk::Runs;
    for (Client& reader : readers) {
        EXPECT_EQ("page", reader.Read().body);
        EXPECT_EQ("quick", reader.Ask(Get("/quick")).body) << "on the same connection";
    }
}

TEST_F(StalledDiskTest, HoldsUpNothingInTheMiddleOfAFile) {
    for (const char* path : {"/large.bin", "/handed"}) {
        Client reader = Connect();
        reader.Send(Get(path));
        std::string text = reader.Take(1000);
        const std::size_t whole = text.find("\r\n\r\n") + 4 + large.size();
        g_disk = Disk::StandsStill;
        while (g_stuck == 0 && text.size() + 10'000 < whole) {
            text += reader.Take(10'000);
            simulation::WaitUntil([] { return g_stuck > 0; }, simulation::milliseconds(1));
        }
        EXPECT_TRUE(WaitForStuck(1)) << path;
        EXPECT_EQ("quick", Connect().Ask(Get("/quick")).body) << path;
        g_disk = Disk::Runs;
        reader.Send(Get("/quick"));
        text += reader.Take(whole - text.size());
        EXPECT_TRUE(text.ends_with("xxxend")) << path;
        EXPECT_EQ("quick", reader.Read().body) << path;
    }
}

TEST_F(StalledDiskTest, OfAColdDiskTheRepliesAreTheSame) {
    const std::vector<std::string> requests = {
        Get("/page.txt"),        Get("/page.txt", "Range: bytes=1-2\r\n"),     Get("/page.html"),
        Get("/missing.txt"),     Get("/page.html", "Accept-Encoding: br\r\n"), Get("/page.txt/x"),
        Post("/page.txt", "abc")};
    Client client = Connect();
    for (const std::string& request : requests) {
        g_disk = Disk::Runs;
        const HttpReply warm = client.Ask(request);
        g_disk = Disk::IsCold;
        const HttpReply cold = client.Ask(request);
        EXPECT_EQ(warm.body, cold.body) << request;
        // All but the date, which comes first.
        EXPECT_EQ(warm.head.substr(warm.head.find("GMT")), cold.head.substr(cold.head.find("GMT")))
            << request;
        EXPECT_EQ(warm.status, cold.status) << request;
    }
}

TEST_F(StalledDiskTest, IsLeftBehindAtAStop) {
    limits.stopGrace = std::chrono::milliseconds(50);
    http_server_stop(&server);
    Run();
    g_disk = Disk::StandsStill;
    Client reader = Connect();
    reader.Send(Get("/page.txt"));
    EXPECT_TRUE(WaitForStuck(1));
    TakeLog();
    http_server_stop(&server);
    EXPECT_EQ(1U, TakeLog().size());
    g_disk = Disk::Runs;
    EXPECT_EQ("", reader.Rest()) << "nothing comes after the stop";
    EXPECT_TRUE(WaitForStuck(0));
}

}  // namespace
