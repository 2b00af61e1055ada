// The WebSocket server: upgrade, frames right and wrong, callbacks.
#include "simulation/Wait.h"
#include "tests/http/HttpFixture.h"

#include <atomic>
#include <stdexcept>
#include <thread>

namespace {

std::string CloseFrame(int code) {
    return {'\x88', '\x02', static_cast<char>(code >> 8), static_cast<char>(code)};
}

class WebSocketTest : public HttpTest {
  protected:
    void SetUp() override {
        webSockets.onopen = [this](const WebSocketChannelPtr& channel, const HttpRequestPtr& request) {
            latest = channel;
            told = AddressOf(channel) + request->path + " " + request->client_addr.ip;
            ++opened;
        };
        webSockets.onmessage = [](const WebSocketChannelPtr& channel, const std::string& text) {
            if (text == "throw") {
                throw std::runtime_error("out of tea");
            }
            channel->send(text);
        };
        webSockets.onclose = [this](const WebSocketChannelPtr& channel) {
            told = AddressOf(channel);
            ++closed;
        };
        server.ws = &webSockets;
    }

    void TearDown() override {
        HttpTest::TearDown();
        EXPECT_EQ(opened, closed);
    }

    static std::string AddressOf(const WebSocketChannelPtr& channel) {
        char text[64] = {};
        return sockaddr_str(reinterpret_cast<sockaddr_u*>(hio_peeraddr(channel->io())), text, sizeof text);
    }

    Client Open(const char* from = "127.0.0.1") {
        const int before = opened;
        Client client(server.port, from);
        EXPECT_EQ("s3pPLMBiTxaQ9kYGzzhZRbK+xOo=", client.Ask(upgrade).Header("Sec-WebSocket-Accept"));
        EXPECT_GT(opened, before) << "whoever has read the reply is known";
        return client;
    }

    static void ExpectAnswer(Client& client) {
        client.Send(FromHex("8980 00000000"));
        EXPECT_EQ(FromHex("8A00"), client.Take(2)) << "to a ping";
    }

    bool WaitForClosed(int number) {
        return simulation::WaitUntil([&] { return closed == number; });
    }

    const std::string upgrade = Rows("upgrades.json")[0][1];
    std::string told;  // by the latest callback; read after the count that it raised
    std::atomic<int> opened = 0;
    std::atomic<int> closed = 0;
    WebSocketChannelPtr latest;
};

TEST_F(WebSocketTest, AnswersTheUpgrade) {
    Run();
    for (const auto& row : Rows("upgrades.json")) {
        EXPECT_EQ(row[0], Connect().Ask(Expanded(row[1])).status) << row[1];
    }
    for (const auto& [status, protocol, from, to] :
         Rows("handshakes.json").get<std::vector<std::tuple<int, std::string, std::string, std::string>>>()) {
        std::string request = upgrade;
        const HttpReply reply = Connect().Ask(request.replace(request.find(from), from.size(), to));
        EXPECT_EQ(status, reply.status) << to;
        EXPECT_EQ(status == 426 ? "13" : "", reply.Header("Sec-WebSocket-Version")) << to;
        EXPECT_EQ(protocol, reply.Header("Sec-WebSocket-Protocol")) << to;
    }
    const std::string start = upgrade.substr(0, upgrade.find("Host:"));
    for (const auto& row : OriginRows()) {
        const int status = Connect().Ask(start + row[1].get<std::string>() + "\r\n").status;
        EXPECT_EQ(row[0] == 200 ? 101 : 403, status) << row[1];
    }
}

TEST_F(WebSocketTest, ExchangesMessages) {
    Run();
    Client client = Open();
    const std::string address = "127.0.0.1:" + std::to_string(client.Socket().LocalPort());
    EXPECT_EQ(address + "/ws?id=7 127.0.0.1", told);
    for (const auto& row : Rows("exchange.json")) {
        client.Send(FromHex(Expanded(row[1])));
        const std::string answer = FromHex(Expanded(row[2]));
        EXPECT_EQ(answer, client.Take(answer.size())) << row[0];
    }
    EXPECT_EQ(4, latest->send("late"));
    EXPECT_EQ("\x81\x04late", client.Take(6));
    client.Send(FromHex("8882 00000000 03E8"));
    EXPECT_EQ(CloseFrame(1000), client.Rest());
    client.Socket().Close();
    EXPECT_TRUE(WaitForClosed(1));
    EXPECT_EQ(address, told) << "the address outlives the connection";
    EXPECT_EQ(-1, latest->send("too late"));
}

TEST_F(WebSocketTest, IsKnownBeforeTheReply) {
    webSockets.onopen = [this](const WebSocketChannelPtr& channel, const HttpRequestPtr&) {
        channel->send("hello");
        std::this_thread::sleep_for(std::chrono::milliseconds(50));  // a busy machine
        ++opened;
    };
    Run();
    EXPECT_EQ("\x81\x05hello", Open().Take(7)) << "what the callback sends follows the reply";
    for (int i = 0; i < 3; ++i) {
        Connect().Send(upgrade);  // and gone
    }
    Client kept = Connect();
    kept.Send(upgrade);
    EXPECT_EQ(0, http_server_stop(&server));
}

TEST_F(WebSocketTest, RefusesMalformedFrames) {
    Run();
    int number = 0;
    for (const auto& row : Rows("wrong_frames.json")) {
        SCOPED_TRACE(row[1].dump());
        Client client = Open();
        client.Send(FromHex(Expanded(row[2])));
        EXPECT_EQ(CloseFrame(row[0]), client.Rest());
        client.Socket().Close();
        EXPECT_TRUE(WaitForClosed(++number));
    }
}

// Of eight places, and a share of two.
TEST_F(WebSocketTest, KeepsPlacesForOtherAddresses) {
    server.worker_threads = 1;
    server.worker_connections = 8;
    limits.webSocketsOfAddress = 2;
    Run();
    TakeLog();
    std::vector<Client> clients;
    clients.reserve(8);
    for (int i = 0; i < 4; ++i) {
        clients.push_back(Open());
    }
    for (int i = 0; i < 2; ++i) {
        const HttpReply reply = Connect().Ask(upgrade);
        EXPECT_EQ(503, reply.status) << "half of all places, and all are in use";
        EXPECT_EQ("5", reply.Header("Retry-After"));
    }
    for (const char* other : {"127.0.0.2", "127.0.0.2", "127.0.0.3", "127.0.0.3"}) {
        clients.push_back(Open(other));
    }
    EXPECT_EQ(0, Client(server.port, "127.0.0.4").Ask(upgrade).status) << "no place at all";
    for (Client& client : clients) {
        ExpectAnswer(client);  // nobody who is there gives way
    }
    // At most one a minute.
    EXPECT_THAT(TakeLog(),
                testing::Contains(HasSubstr("127.0.0.1 has 4 WebSocket connections; refused")).Times(1));
}

TEST_F(WebSocketTest, TheSilentGiveWay) {
    server.worker_threads = 1;
    server.worker_connections = 4;
    limits.webSocketsOfAddress = 2;
    limits.webSocketSilence = std::chrono::milliseconds(0);  // the one that was heard last stays longest
    Run();
    Client first = Open();
    Client second = Open();
    ExpectAnswer(first);
    Client third = Open();
    EXPECT_EQ("", second.Rest()) << "of the same address";
    Client other = Open("127.0.0.2");
    Client last = Open("127.0.0.2");
    Client stranger = Open("127.0.0.3");
    EXPECT_EQ("", first.Rest()) << "of all";
    for (Client* client : {&third, &other, &last, &stranger}) {
        ExpectAnswer(*client);
    }
}

TEST_F(WebSocketTest, EndsWhatDoesNotEnd) {
    limits.webSocketClose = std::chrono::milliseconds(100);
    limits.webSocketQueueBytes = 200'000;
    limits.writeStall = std::chrono::milliseconds(500);
    limits.sweep = std::chrono::milliseconds(20);
    Run();
    Open().Socket().Close();
    EXPECT_TRUE(WaitForClosed(1));
    Client silent = Open();
    silent.Send(FromHex("8381 00000000 61"));
    EXPECT_TRUE(WaitForClosed(2)) << "waits for the client's end, but not for ever";
    Client deaf = Open();
    EXPECT_TRUE(simulation::WaitUntil([&] { return latest->send(std::string(50'000, 'x')) < 0; }));
    EXPECT_TRUE(WaitForClosed(3)) << "never reads";
    Client pinging = Open();
    const std::string pings = FromHex(Expanded("{3000*89FD 00000000" + std::string(250, '0') + "}"));
    EXPECT_TRUE(simulation::WaitUntil([&] { return !pinging.Send(pings) || closed == 4; }))
        << "never reads what it gets for its pings";
    EXPECT_TRUE(WaitForClosed(4));
    Client kept = Open();
    ExpectAnswer(kept);
    EXPECT_EQ(0, http_server_stop(&server));
    EXPECT_EQ(CloseFrame(1001), kept.Rest());
    EXPECT_EQ(5, closed) << "closed by the stop";
}

}  // namespace
