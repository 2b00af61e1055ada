// What may be sent as a body: the rules of the routes, and the memory that large bodies share.
#include "platform/WebRequests.h"
#include "simulation/Wait.h"
#include "tests/http/HttpFixture.h"

#include <atomic>
#include <future>

namespace {

constexpr std::size_t kMegabyte = std::size_t{1} << 20;

std::string Announcing(const std::string& path, std::size_t bytes, const std::string& headers = "") {
    return Request("POST " + path, "Content-Length: " + std::to_string(bytes) + "\r\n" + headers);
}

class BodyTest : public HttpTest {
  protected:
    void SetUp() override {
        for (const char* path : {"/plain", "/large", "/known"}) {
            service.POST(path, [](HttpRequest* request, HttpResponse* response) {
                return Says(std::to_string(request->body.size()))(request, response);
            });
        }
        SBodyRule rule{.limit = 8 * kMegabyte, .admits = {}, .refuse = {}, .cost = {}};
        rule.cost = [](const std::string& body) { return body.front() == 'x' ? body.size() * 55 : 0; };
        SetBodyRule(service, "/large", rule);
        rule.admits = [this](const HttpRequest& request) {
            ++asked;
            return request.client_addr.ip != "127.0.0.1";
        };
        rule.refuse = [](HttpRequest* request, HttpResponse* response) {
            return Says("refused" + request->body)(request, response);
        };
        SetBodyRule(service, "/known", rule);
        limits.memoryBudget = 10 * kMegabyte;
        limits.sweep = std::chrono::milliseconds(20);
    }

    std::atomic<int> asked = 0;
};

TEST_F(BodyTest, EachRouteHasItsLimit) {
    Run();
    EXPECT_EQ("1048576", Connect().Ask(Post("/plain", std::string(kMegabyte, 'b'))).body);
    EXPECT_EQ(413, Connect().Ask(Announcing("/plain", kMegabyte + 1)).status) << "at once";
    EXPECT_EQ("3145728", Connect().Ask(Post("/large", std::string(3 * kMegabyte, 'b'))).body);
    EXPECT_EQ(413, Connect().Ask(Announcing("/large", 8 * kMegabyte + 1)).status);
    const std::string chunk = "200000\r\n" + std::string(2 * kMegabyte, 'c') + "\r\n";
    EXPECT_EQ(413, Connect().Ask(Request("POST /plain", kChunked, chunk)).status);
}

TEST_F(BodyTest, AsksBeforeItTakesALargeBody) {
    Run();
    const std::string large(2 * kMegabyte, 'b');
    Client client = Connect();
    EXPECT_EQ("5", client.Ask(Post("/known", "small")).body);
    EXPECT_EQ(0, asked) << "the handler may look for itself";
    const std::pair<const char*, std::string> cases[] = {
        {"nothing of the body", Post("/known", large)},
        {"might become large", Request("POST /known", kChunked, "3\r\nabc\r\n0\r\n\r\n")},
        {"without a byte of the body", Announcing("/known", large.size(), "Expect: 100-continue\r\n")},
    };
    for (const auto& [name, request] : cases) {
        EXPECT_EQ("refused", client.Ask(request).body) << name;
    }
    EXPECT_EQ(3, asked);
}

TEST_F(BodyTest, LargeBodiesShareTheMemory) {
    Run();
    TakeLog();
    const auto refused = [](const HttpReply& reply) {
        return reply.status == 503 && reply.Header("Retry-After") == "5";
    };
    EXPECT_TRUE(refused(Connect().Ask(Post("/large", std::string(kMegabyte, 'x'))))) << "becomes 55 MiB";
    EXPECT_EQ(200, Connect().Ask(Post("/large", std::string(kMegabyte / 8, 'x'))).status) << "7 MiB";
    {
        Client slow = Connect();
        slow.Send(Announcing("/large", 8 * kMegabyte));
        slow.Send(std::string(7 * kMegabyte, 'b'));
        EXPECT_TRUE(simulation::WaitUntil(
            [&] { return refused(Connect().Ask(Announcing("/large", 5 * kMegabyte))); }));
        EXPECT_EQ("60000", Connect().Ask(Post("/large", std::string(60'000, 'b'))).body)
            << "small ones go on";
        const std::string chunk = "700000\r\n" + std::string(7 * kMegabyte, 'c') + "\r\n";
        EXPECT_TRUE(refused(Connect().Ask(Request("POST /large", kChunked, chunk))));
        slow.Send(std::string(kMegabyte, 'b'));
        EXPECT_EQ(std::to_string(8 * kMegabyte), slow.Read().body) << "what was let in is let through";
    }
    EXPECT_EQ("5242880", Connect().Ask(Post("/large", std::string(5 * kMegabyte, 'b'))).body) << "given back";
    const auto lines = TakeLog();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ("Not enough memory for the body of: /large from 127.0.0.1", lines[0]);
    EXPECT_LE(lines.size(), 3U) << "not a line for each";
}

}  // namespace
