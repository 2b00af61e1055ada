// Handlers that block: what goes on meanwhile, who waits, and how a server ends.
#include "simulation/Wait.h"
#include "tests/http/HttpFixture.h"

#include <array>
#include <atomic>
#include <future>
#include <system_error>
#include <thread>

namespace {

// What handlers wait at. Shared, since a handler may outlive its test.
struct Gate {
    std::atomic<int> inside = 0;
    std::atomic<bool> open = false;
};

class ThreadsTest : public HttpTest {
  protected:
    void SetUp() override {
        Write("page.txt", "page");
        service.Static("/", folder.Path().string().c_str());
        service.GET("/quick", Says("quick"));
        service.GET("/gate/{number}", [gate = gate](HttpRequest* request, HttpResponse* response) {
            ++gate->inside;
            simulation::WaitUntil([&] { return gate->open.load(); });
            --gate->inside;
            return Says(request->GetParam("number"))(request, response);
        });
        server.worker_threads = 4;
    }

    void TearDown() override {
        gate->open = true;
        HttpTest::TearDown();
    }

    void Enter(int count) {
        for (int i = 0; i < count; ++i) {
            clients.emplace_back(server.port).Send(Get("/gate/" + std::to_string(clients.size() - 1)));
        }
    }

    bool WaitForInside(int count) {
        return simulation::WaitUntil([&] { return gate->inside == count; });
    }

    // With a route whose handlers are counted, and all places taken by others.
    void RunWithoutAFreePlace() {
        service.POST("/click", [this](HttpRequest*, HttpResponse*) {
            ++fired;
            return 200;
        });
        Run();
        TakeLog();
        Enter(4);
        ASSERT_TRUE(WaitForInside(4));
    }

    const std::shared_ptr<Gate> gate = std::make_shared<Gate>();
    std::vector<Client> clients;
    std::atomic<int> fired = 0;
};

TEST_F(ThreadsTest, AllWorkersStuckHoldUpOnlyOtherHandlers) {
    Run();
    for (int stuck = 1; stuck <= 4; ++stuck) {
        EXPECT_EQ("quick", Connect().Ask(Get("/quick")).body) << stuck;
        Enter(1);
        ASSERT_TRUE(WaitForInside(stuck));
        EXPECT_EQ("page", Connect().Ask(Get("/page.txt")).body) << stuck;
    }
    Enter(20);
    Client other = Connect();
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ("page", other.Ask(Get("/page.txt")).body);
    }
    EXPECT_EQ(4, gate->inside) << "no more than the workers at once";
    gate->open = true;
    for (std::size_t i = 0; i < clients.size(); ++i) {
        EXPECT_EQ(std::to_string(i), clients[i].Read().body);
        EXPECT_EQ("quick", clients[i].Ask(Get("/quick")).body);
    }
}

TEST_F(ThreadsTest, DropsWritesThatWaitedTooLong) {
    limits.writeWait = std::chrono::milliseconds(300);
    limits.sweep = std::chrono::milliseconds(20);
    ASSERT_NO_FATAL_FAILURE(RunWithoutAFreePlace());
    std::array late = {Connect(), Connect(), Connect()};
    for (Client& client : late) {
        client.Send(Post("/click", "{}"));
    }
    Client reader = Connect();
    reader.Send(Get("/quick"));
    for (Client& client : late) {
        const HttpReply reply = client.Read();
        EXPECT_EQ(503, reply.status) << "while all places are taken";
        EXPECT_EQ("1", reply.Header("Retry-After"));
    }
    gate->open = true;
    EXPECT_EQ("quick", reader.Read().body) << "who reads may wait";
    EXPECT_EQ(200, late[0].Ask(Post("/click", "{}")).status) << "the connection serves on";
    EXPECT_EQ(1, fired);
    const auto lines = TakeLog();
    ASSERT_FALSE(lines.empty());
    EXPECT_THAT(lines[0], HasSubstr("/click from 127.0.0.1"));
    EXPECT_LE(lines.size(), 2U) << "not a line for each";
}

TEST_F(ThreadsTest, DropsWritesWhoseClientsHaveGone) {
    ASSERT_NO_FATAL_FAILURE(RunWithoutAFreePlace());
    Client ends = Connect();
    Client resets = Connect();
    Client stays = Connect();
    for (Client* client : {&ends, &resets, &stays}) {
        client->Send(Post("/click", "{}"));
    }
    for (int i = 0; i < 8; ++i) {
        clients.emplace_back(server.port);  // each event loop gets some of them
        EXPECT_EQ("page", clients.back().Ask(Get("/page.txt")).body) << "behind the clicks";
    }
    ends.Socket().ShutdownSend();
    resets.Socket().Reset();
    gate->open = true;
    EXPECT_EQ(503, ends.Read().status) << "it might listen yet";
    EXPECT_EQ(200, stays.Read().status);
    http_server_stop(&server);
    EXPECT_EQ(1, fired);
    const auto lines = TakeLog();
    ASSERT_FALSE(lines.empty());
    EXPECT_THAT(lines[0], HasSubstr("client has gone"));
}

TEST_F(ThreadsTest, ServesManyWhileTheLeadChangesHands) {
    service.GET("/nap/{number}", [](HttpRequest* request, HttpResponse* response) {
        std::this_thread::sleep_for(
            std::chrono::milliseconds(std::stoi(request->GetParam("number")) % 3 * 2));
        return Says(request->GetParam("number"))(request, response);
    });
    Run();
    std::array<std::future<void>, 8> users;
    for (std::size_t user = 0; user < users.size(); ++user) {
        users[user] = std::async(std::launch::async, [client = Connect(), user]() mutable {
            for (std::size_t i = user; i < 480; i += 8) {
                EXPECT_EQ(std::to_string(i), client.Ask(Get("/nap/" + std::to_string(i))).body);
            }
        });
    }
}

TEST_F(ThreadsTest, StopEndsConnectionsAndFreesThePort) {
    Run();
    Client idle = Connect();
    EXPECT_EQ(200, idle.Ask(Get("/quick")).status);
    Enter(1);
    ASSERT_TRUE(WaitForInside(1));
    auto stopped = std::async(std::launch::async, [&] { return http_server_stop(&server); });
    EXPECT_EQ("", idle.Rest());
    gate->open = true;
    EXPECT_EQ("0", clients[0].Read().body) << "a handler that runs is let finish";
    EXPECT_EQ("", clients[0].Rest());
    EXPECT_EQ(0, stopped.get());
    EXPECT_THROW(Connect(), std::system_error);
    EXPECT_EQ(0, http_server_stop(&server)) << "twice";
    EXPECT_EQ(0, http_server_run(&server, 0)) << "and again, on the same port";
    EXPECT_EQ(200, Connect().Ask(Get("/quick")).status);
}

TEST_F(ThreadsTest, StopLeavesHandlersThatHangBehind) {
    limits.stopGrace = std::chrono::milliseconds(50);
    Run();
    Enter(6);
    ASSERT_TRUE(WaitForInside(4));
    TakeLog();
    http_server_stop(&server);
    EXPECT_EQ(1U, TakeLog().size());
    EXPECT_THROW(Connect(), std::system_error);
    service = hv::HttpService();  // may die now
    gate->open = true;
    EXPECT_TRUE(WaitForInside(0));
    for (auto& client : clients) {
        EXPECT_EQ("", client.Rest()) << "nothing comes after the stop";
    }
}

TEST_F(ThreadsTest, RunTellsWhetherItListens) {
    http_server_t none;
    EXPECT_EQ(0, http_server_run(&none, 0)) << "port 0: no listener";
    EXPECT_EQ(0, http_server_stop(&none)) << "never ran";
    Run();
    http_server_t copy = server;
    EXPECT_EQ(-22, http_server_run(&copy, 0)) << "runs already";
    for (const int port : {server.port, 65536, -1}) {
        none.port = port;
        EXPECT_EQ(-22, http_server_run(&none, 0)) << port;
    }
    EXPECT_EQ(200, Connect().Ask(Get("/quick")).status);
    EXPECT_EQ(0, http_server_stop(&copy)) << "by the copy";
    EXPECT_THROW(Connect(), std::system_error);
}

}  // namespace
