// Connections that are gone before they are accepted. The linker leads the library's calls here (--wrap).
#include "tests/http/HttpFixture.h"

#include <atomic>
#include <cerrno>

#include <sys/socket.h>

namespace {

std::atomic<int> g_gone = 0;  // connections that the next calls of accept find to be gone

}  // namespace

#pragma GCC visibility push(default)
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming): the
// linker's
int __real_accept(int listener, sockaddr* peer, socklen_t* size);

int __wrap_accept(int listener, sockaddr* peer, socklen_t* size) {
    if (g_gone > 0) {
        --g_gone;
        errno = ECONNABORTED;
        return -1;
    }
    return __real_accept(listener, peer, size);
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)
}
#pragma GCC visibility pop

namespace {

TEST_F(HttpTest, AConnectionThatIsGoneHoldsUpNoneBehindIt) {
    service.GET("/", [](HttpRequest*, HttpResponse* response) {
        response->SetBody("served");
        return 200;
    });
    Run();
    for (const int gone : {1, 3}) {
        g_gone = gone;
        EXPECT_EQ(Connect().Ask(Get("/")).body, "served") << gone;
        EXPECT_EQ(g_gone, 0);
    }
}

}  // namespace
