// The WebSocket server: upgrade, frames right and wrong, callbacks.
#include "tests/http/HttpFixture.h"
#include "tests/support/Wait.h"

#include <algorithm>
#include <atomic>
#include <stdexcept>

namespace {

std::string Upgrade(const std::string& headers = "Host: box:8081\r\n") {
    return "GET /ws?id=7 HTTP/1.1\r\nUpgrade: websocket\r\nConnection: keep-alive, Upgrade\r\n"
           "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n" +
           headers + "\r\n";
}

// A frame (RFC 6455, 5.2), masked as clients do. first: FIN, reserved bits and opcode.
std::string Frame(int first, const std::string& payload, bool masked = true) {
    const std::size_t mask = masked ? 0x80 : 0;
    const std::size_t bytes = payload.size() < 126 ? 0 : payload.size() < 65536 ? 2 : 8;
    std::string frame = {static_cast<char>(first),
                         static_cast<char>(mask | (payload.size() < 126 ? payload.size() : 126 + bytes / 8))};
    for (std::size_t i = bytes; i-- > 0;) {
        frame += static_cast<char>(payload.size() >> (8 * i));
    }
    const std::string key = masked ? std::string("\x11\x22\x33\x44") : std::string(4, 0);
    frame += masked ? key : "";
    for (std::size_t i = 0; i < payload.size(); ++i) {
        frame += static_cast<char>(payload[i] ^ key[i % 4]);
    }
    return frame;
}

// Of hexadecimal digits, blanks between.
std::string Bytes(std::string digits) {
    digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

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

    Client Open() {
        const int before = opened;
        Client client = Connect();
        EXPECT_EQ(101, client.Ask(Upgrade()).status);
        EXPECT_TRUE(support::WaitUntil([&] { return opened > before; }));
        return client;
    }

    bool WaitForClosed(int number) {
        return support::WaitUntil([&] { return closed == number; });
    }

    std::string told;  // by the latest callback; read after the count that it raised
    std::atomic<int> opened = 0;
    std::atomic<int> closed = 0;
    WebSocketChannelPtr latest;
};

TEST_F(WebSocketTest, AnswersTheUpgrade) {
    Run();
    const std::string host = "Host: box:8081\r\n";
    const std::pair<std::string, int> requests[] = {
        {Upgrade(host + "Cookie: " + std::string(15'000, 'c') + "\r\n"), 101},
        {Upgrade(host + "Cookie: " + std::string(17'000, 'c') + "\r\n"), 431},
        {Upgrade(host + "Content-Length: 5\r\n"), 400},
        {Upgrade(), 101},
        {Get("/"), 426},
        {Get("/", "Upgrade: websocket\r\nConnection: Upgrade\r\n"), 400},
    };
    for (const auto& [request, status] : requests) {
        EXPECT_EQ(status, Connect().Ask(request).status) << request.substr(0, 300);
    }
    for (const auto& row : Rows("origins.json")) {
        const std::string from =
            "Host: " + std::string(row[1]) + "\r\nOrigin: " + std::string(row[2]) + "\r\n";
        EXPECT_EQ(row[0] == 200 ? 101 : 403, Connect().Ask(Upgrade(from)).status) << from;
    }
}

TEST_F(WebSocketTest, ExchangesMessages) {
    Run();
    Client client = Connect();
    client.Send(Upgrade() + Frame(0x81, "heartbeat"));  // the first message may come along with the upgrade
    EXPECT_EQ("s3pPLMBiTxaQ9kYGzzhZRbK+xOo=", client.Read().Header("Sec-WebSocket-Accept"));
    EXPECT_EQ("\x81\x09heartbeat", client.Take(11));
    const std::string address = "127.0.0.1:" + std::to_string(client.Socket().LocalPort());
    EXPECT_EQ(address + "/ws?id=7 127.0.0.1", told);
    for (const char byte : Frame(0x01, "heart") + Frame(0x89, "p") + Frame(0x80, "beat")) {
        client.Send({&byte, 1});
    }
    EXPECT_EQ("\x8a\x01p\x81\x09heartbeat", client.Take(14)) << "fragments, a ping between, byte by byte";
    const std::string largest(65'536, 'x');
    client.Send(Frame(0x81, largest));
    EXPECT_EQ(Frame(0x81, largest, false), client.Take(largest.size() + 10));
    client.Send(Frame(0x81, "throw") + Frame(0x82, ""));
    EXPECT_EQ(std::string("\x81\0", 2), client.Take(2)) << "lives on";
    EXPECT_EQ(4, latest->send("late"));
    EXPECT_EQ("\x81\x04late", client.Take(6));
    client.Send(Frame(0x88, CloseFrame(1000).substr(2) + "bye"));
    EXPECT_EQ(CloseFrame(1000), client.Rest());
    client.Socket().Close();
    EXPECT_TRUE(WaitForClosed(1));
    EXPECT_EQ(address, told) << "the address outlives the connection";
    EXPECT_EQ(-1, latest->send("too late"));
}

TEST_F(WebSocketTest, RefusesMalformedFrames) {
    Run();
    int number = 0;
    for (const auto& row : Rows("wrong_frames.json")) {
        SCOPED_TRACE(row[1].dump());
        Client client = Open();
        client.Send(Bytes(Expanded(row[2])));
        EXPECT_EQ(CloseFrame(row[0]), client.Rest());
        client.Socket().Close();
        EXPECT_TRUE(WaitForClosed(++number));
    }
}

TEST_F(WebSocketTest, EndsWhatDoesNotEnd) {
    limits.webSocketClose = std::chrono::milliseconds(100);
    limits.webSocketQueueBytes = 200'000;
    limits.sweep = std::chrono::milliseconds(20);
    Run();
    Open().Socket().Close();
    EXPECT_TRUE(WaitForClosed(1));
    Client silent = Open();
    silent.Send(Frame(0x83, "a"));
    EXPECT_TRUE(WaitForClosed(2)) << "waits for the client's end, but not for ever";
    Client deaf = Open();
    EXPECT_TRUE(support::WaitUntil([&] { return latest->send(std::string(50'000, 'x')) < 0; }));
    EXPECT_TRUE(WaitForClosed(3)) << "never reads";
    Client kept = Open();
    EXPECT_EQ(0, http_server_stop(&server));
    EXPECT_EQ(CloseFrame(1001), kept.Rest());
    EXPECT_EQ(4, closed) << "closed by the stop";
}

}  // namespace
