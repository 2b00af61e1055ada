// What comes in: framing, limits, refusals, the order of replies.
#include "platform/WebRequests.h"
#include "simulation/Wait.h"
#include "tests/http/HttpFixture.h"
#include "tests/http/Understood.h"

namespace {

class RequestTest : public HttpTest {
  protected:
    void SetUp() override {
        service.POST("/echo", [](HttpRequest* request, HttpResponse* response) {
            response->SetBody(request->body);
            return 200;
        });
        service.GET("/who", [](HttpRequest* request, HttpResponse* response) {
            response->SetBody(request->client_addr.ip + ":" + std::to_string(request->client_addr.port) +
                              request->path + request->GetHeader("x-twice"));
            return 200;
        });
    }
};

TEST_F(RequestTest, RefusesAndCloses) {
    Run();
    for (const auto& row : Rows("refused_requests.json")) {
        const std::string request = Expanded(row[2]);
        SCOPED_TRACE(row[1].dump());
        Client client = Connect();
        const HttpReply reply = client.Ask(request);
        EXPECT_EQ(row[0], reply.status);
        EXPECT_EQ("close", reply.Header("Connection"));
        EXPECT_EQ("", client.Rest());
        EXPECT_EQ(row[0].dump(), Understood(request, 1, limits)) << "byte by byte";
    }
}

TEST_F(RequestTest, ReadsBodies) {
    SetBodyRule(service, "/echo", {.limit = 3'000'000, .admits = {}, .refuse = {}, .cost = {}});
    Run();
    for (const auto& row : Rows("read_requests.json")) {
        Client client = Connect();
        HttpReply reply = client.Ask(Expanded(row[2]));
        reply = reply.status == 100 ? client.Read() : reply;
        EXPECT_EQ(200, reply.status) << row[1];
        EXPECT_EQ(row[0], reply.body) << row[1];
        const std::string request = std::string(row[2]).substr(row[2].get<std::string>().find('P'));
        EXPECT_EQ(Understood(request, request.size(), limits), Understood(request, 1, limits)) << row[1];
    }
    const std::string big(3'000'000, 'b');
    EXPECT_TRUE(Connect().Ask(Post("/echo", big)).body == big);
}

TEST_F(RequestTest, ReadsTargetAndHost) {
    for (const auto& row : Rows("targets.json")) {
        const std::string request = std::string(row[2]) + "\r\n\r\n";
        const std::string expected = std::string(row[0]) + "\n\nHost:" + std::string(row[1]);
        EXPECT_EQ(expected, Understood(request, 1, limits)) << row[2];
    }
}

TEST_F(RequestTest, AnswersInOrderAndKeepsTheConnection) {
    Run();
    Client client = Connect();
    std::string requests;
    for (int i = 0; i < 500; ++i) {
        requests += i % 3 == 0 ? Post("/echo", std::to_string(i)) : Get("/who?" + std::to_string(i));
        requests += i % 7 == 0 ? Post("/nowhere", "read, and of no use") : "";
    }
    client.Send(requests);
    const std::string start = "127.0.0.1:" + std::to_string(client.Socket().LocalPort()) + "/who?";
    for (int i = 0; i < 500; ++i) {
        ASSERT_EQ(i % 3 == 0 ? std::to_string(i) : start + std::to_string(i), client.Read().body);
        ASSERT_EQ(i % 7 == 0 ? 404 : 0, i % 7 == 0 ? client.Read().status : 0);
    }
    const HttpReply last = client.Ask(Get("/who?", "X-Twice: a\r\nx-twice: b\r\nConnection: close\r\n"));
    EXPECT_EQ(start + "a, b", last.body);
    EXPECT_EQ("", client.Rest());
    Client old = Connect();
    const HttpReply kept = old.Ask("GET /who HTTP/1.0\r\nConnection: keep-alive\r\n\r\n");
    EXPECT_EQ("keep-alive", kept.Header("Connection"));
    EXPECT_EQ("close", old.Ask("GET /who HTTP/1.0\r\n\r\n").Header("Connection"));
    EXPECT_EQ("", old.Rest());
}

TEST_F(RequestTest, GivesLeaveToSendTheBody) {
    Run();
    const std::string expects = "Content-Length: 2\r\nExpect: 100-continue\r\n";
    Client client = Connect();
    EXPECT_EQ(100, client.Ask(Request("POST /echo", expects)).status);
    EXPECT_EQ("ok", client.Ask("ok").body);
    EXPECT_EQ(404, client.Ask(Request("POST /nowhere", expects)).status);
    EXPECT_EQ("", client.Rest());
}

TEST_F(RequestTest, PagesFromElsewhereMayNotPost) {
    limits.refusedPages = {};
    Run();
    for (const auto& row : OriginRows()) {
        TakeLog();
        const std::string from = row[1];
        const int status =
            Connect().Ask("POST /echo HTTP/1.1\r\n" + from + "Content-Length: 1\r\n\r\nx").status;
        EXPECT_EQ(row[0], status) << from;
        const auto lines = TakeLog();
        ASSERT_EQ(status == 403 ? 1U : 0U, lines.size()) << from;
        if (row.size() > 2) {
            EXPECT_THAT(lines[0], HasSubstr(std::string(row[2])));
        }
    }
    EXPECT_EQ(200, Connect().Ask(Get("/who", "Origin: http://evil.example\r\n")).status);
}

TEST_F(RequestTest, APageFromElsewhereCantFillTheLog) {
    Run();
    TakeLog();
    Client client = Connect();
    for (int i = 0; i < 50; ++i) {
        const std::string path = "POST /echo" + std::to_string(i);
        EXPECT_EQ(403, client.Ask(Request(path, "Origin: http://evil.example\r\n")).status);
    }
    const std::string anotherReason =
        "POST /own HTTP/1.1\r\nHost: b.example\r\nOrigin: http://b.example\r\n\r\n";
    EXPECT_EQ(403, client.Ask(anotherReason).status);
    http_server_stop(&server);
    EXPECT_THAT(TakeLog(), ElementsAre(HasSubstr("/echo0 from 127.0.0.1 for a page of http://evil.example"),
                                       HasSubstr("/own"), HasSubstr("another host: 49 more")));
}

TEST_F(RequestTest, GivesUpOnSlowClients) {
    limits.headerWait = limits.bodyStall = limits.keepAlive = std::chrono::milliseconds(150);
    limits.sweep = std::chrono::milliseconds(20);
    Run();
    for (const std::string begun : {"", "GET /who HT", "GET /who HTTP/1.1\r\nHost: a\r\n",
                                    "POST /echo HTTP/1.1\r\nHost: a\r\nContent-Length: 5\r\n\r\nab"}) {
        Client client = Connect();
        client.Send(begun);
        EXPECT_EQ("", client.Rest()) << begun;
    }
    Client idle = Connect();
    EXPECT_EQ(200, idle.Ask(Get("/who")).status);
    EXPECT_EQ("", idle.Rest());
    Client trickling = Connect();
    EXPECT_TRUE(simulation::WaitUntil([&] { return !trickling.Send("G"); }))
        << "the bound of the header is absolute";
}

TEST_F(RequestTest, WantsBytesAtALeastRate) {
    limits.bodyStall = limits.writeStall = std::chrono::hours(1);
    limits.transferWait = limits.sweep = std::chrono::milliseconds(50);
    limits.transferRate = 1;
    Run();
    const std::string part(1000, 'x');
    Client steady = Connect();
    steady.Send(Request("POST /echo", "Content-Length: 1001\r\n", part));
    for (const char* length : {"Content-Length: 5\r\n", kChunked}) {
        Client silent = Connect();
        silent.Send(Request("POST /echo", length));
        EXPECT_EQ("", silent.Rest()) << length;
    }
    EXPECT_EQ(part + "y", steady.Ask("y").body) << "it has earned its time";
}

TEST_F(RequestTest, MakesRoomForNewConnections) {
    server.worker_threads = 1;
    server.worker_connections = 8;
    Run();
    std::vector<Client> idle;
    for (int i = 0; i < 40; ++i) {
        EXPECT_EQ(200, idle.emplace_back(server.port).Ask(Get("/who")).status);
    }
    EXPECT_EQ("", idle.front().Rest());
    EXPECT_EQ(200, idle.back().Ask(Get("/who")).status) << "the latest are the ones that stay";
}

}  // namespace
