// Any frames behind an upgrade, in pieces of any size: the server sends whole frames, none behind a close,
// and the connection ends with the client. The first byte is the size of the pieces. All on this thread: the
// loop is served between the writes.
#include "libraries/http/src/HttpConnection.h"
#include "tests/fuzz/FuzzTarget.h"

#include <array>

#include <hv/WebSocketServer.h>

#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace hv::internal;

constexpr std::string_view kUpgrade =
    "GET / HTTP/1.1\r\nHost: a\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
    "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n";

/** A server that echoes, without a listener and without threads. */
struct Serving {
    Serving() : server((service.onmessage = Echo, record.ws = &service, record)) {}

    static void Echo(const WebSocketChannelPtr& channel, const std::string& text) { channel->send(text); }

    hv::WebSocketService service;
    http_server_s record;
    Server server;
    TaskLimit tasks{1};
    ServerLoop loop{server, tasks, 10};
};

void CheckFrames(std::string_view frames) {
    bool isClosed = false;
    while (!frames.empty()) {
        Require(!isClosed && frames.size() >= 2);
        const auto first = static_cast<unsigned char>(frames[0]);
        auto length = static_cast<std::size_t>(static_cast<unsigned char>(frames[1]));
        Require(first == 0x81 || first == 0x88 || first == 0x8A);  // text, close, pong; all of them final
        Require(length <= 126 && (first == 0x81 || length < 126));
        frames.remove_prefix(2);
        if (length == 126) {
            Require(frames.size() >= 2);
            length = static_cast<unsigned char>(frames[0]) * 256U + static_cast<unsigned char>(frames[1]);
            frames.remove_prefix(2);
        }
        Require(length <= frames.size());
        frames.remove_prefix(length);
        isClosed = first == 0x88;
    }
}

}  // namespace

FUZZ_TARGET(websocket) {
    static Serving serving;
    if (bytes.empty()) {
        return;
    }
    std::array<int, 2> ends{};
    Require(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) == 0);
    const int client = ends[0];
    auto& context = serving.loop.Context();
    Socket socket(context);
    socket.assign(boost::asio::ip::tcp::v4(), ends[1]);
    serving.loop.Adopt(std::move(socket), {});
    const std::size_t size = bytes[0] == 0 ? bytes.size() : static_cast<unsigned char>(bytes[0]);
    std::string_view piece = kUpgrade;
    for (bytes.remove_prefix(1); !piece.empty(); bytes.remove_prefix(piece.size())) {
        static_cast<void>(::send(client, piece.data(), piece.size(), MSG_NOSIGNAL));  // it may have closed
        context.poll();
        piece = bytes.substr(0, size);
    }
    ::shutdown(client, SHUT_WR);
    context.poll();
    Require(serving.loop.Load() == 0);

    std::string answer(std::size_t{1} << 17U, '\0');
    const ssize_t got = ::recv(client, answer.data(), answer.size(), MSG_DONTWAIT | MSG_WAITALL);
    ::close(client);
    answer.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    const std::size_t end = answer.find("\r\n\r\n");
    Require(answer.starts_with("HTTP/1.1 101 ") && end != std::string::npos);
    CheckFrames(std::string_view(answer).substr(end + 4));
}
