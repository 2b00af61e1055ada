#pragma once

#include "support/HttpClient.h"

namespace support {

/** An open WebSocket connection, as a browser page keeps one. One thread. */
class WebSocketClient {
  public:
    /** Opens the connection. @throw std::runtime_error when the server refuses. */
    explicit WebSocketClient(int port, const std::string& from = "127.0.0.1");

    /** Sends a text message, masked, in one frame; 65,535 bytes at most. */
    void SendText(const std::string& text);

    /** Sends any bytes. */
    void SendRaw(std::string_view bytes) { m_http.Connection().Send(bytes); }

    /** Payload of the next frame; empty when the connection ended. Messages up to 125 bytes. */
    std::string ReceiveFrame();

    /** Sends a message and compares the reply: "heartbeat" comes back. */
    bool Heartbeat();

  private:
    HttpClient m_http;
    std::string m_received;
};

}  // namespace support
