#include "simulation/WebSocketClient.h"

#include <stdexcept>

namespace simulation {

WebSocketClient::WebSocketClient(int port, const char* from) : m_http(port, from) {
    const HttpReply reply = m_http.Exchange(
        "GET / HTTP/1.1\r\nHost: localhost\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
        "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n");
    if (reply.status != 101 || reply.Header("Sec-WebSocket-Accept") != "s3pPLMBiTxaQ9kYGzzhZRbK+xOo=") {
        throw std::runtime_error("no WebSocket: " + reply.head);
    }
}

bool WebSocketClient::Heartbeat() {
    const std::string text = "heartbeat";
    const std::string mask(4, '\0');  // leaves the text as it is
    const char size = static_cast<char>(text.size());
    m_http.Connection().Send("\x81" + std::string(1, static_cast<char>(size | 0x80)) + mask + text);
    const std::string expected = "\x81" + std::string(1, size) + text;
    std::string received;
    while (received.size() < expected.size()) {
        const std::string bytes = m_http.Connection().Receive();
        if (bytes.empty()) {
            return false;
        }
        received += bytes;
    }
    return received == expected;
}

}  // namespace simulation
