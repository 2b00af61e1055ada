#pragma once

#include "simulation/HttpClient.h"

namespace simulation {

/** An open WebSocket connection, like that of a browser page. One thread. */
class WebSocketClient {
  public:
    /** Opens the connection. @throw std::runtime_error when the server refuses. */
    explicit WebSocketClient(int port, const char* from = "127.0.0.1");

    /** Sends "heartbeat" as a page does. @return whether it comes back */
    bool Heartbeat();

  private:
    HttpClient m_http;
};

}  // namespace simulation
