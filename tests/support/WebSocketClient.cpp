#include "support/WebSocketClient.h"

#include <stdexcept>

namespace support {

WebSocketClient::WebSocketClient(int port, const std::string& from) : m_http(port, from) {
    const HttpReply reply = m_http.Exchange(
        "GET / HTTP/1.1\r\nHost: localhost\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
        "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n");
    if (reply.status != 101 || reply.Header("Sec-WebSocket-Accept") != "s3pPLMBiTxaQ9kYGzzhZRbK+xOo=") {
        throw std::runtime_error("no WebSocket: " + reply.head);
    }
}

void WebSocketClient::SendText(const std::string& text) {
    std::string frame = "\x81";
    if (text.size() < 126) {
        frame += static_cast<char>(0x80 | text.size());
    } else {
        frame += static_cast<char>(0xfe);
        frame += static_cast<char>(text.size() >> 8);
        frame += static_cast<char>(text.size() & 0xff);
    }
    SendRaw(frame + std::string(4, '\0') + text);  // a mask of zeros leaves the text as it is
}

std::string WebSocketClient::ReceiveFrame() {
    const auto size = [this] { return static_cast<std::size_t>(m_received[1] & 0x7f); };
    while (m_received.size() < 2 || m_received.size() < 2 + size()) {
        const std::string bytes = m_http.Connection().Receive();
        if (bytes.empty()) {
            return {};
        }
        m_received += bytes;
    }
    std::string payload = m_received.substr(2, size());
    m_received.erase(0, 2 + payload.size());
    return payload;
}

bool WebSocketClient::Heartbeat() {
    SendText("heartbeat");
    return ReceiveFrame() == "heartbeat";
}

}  // namespace support
