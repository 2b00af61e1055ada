#pragma once

#include <functional>
#include <memory>
#include <string>

#include <hv/HttpServer.h>
#include <hv/WebSocketChannel.h>
#include <hv/hsocket.h>

namespace hv {

/**
 * Callbacks of a WebSocket server; empty ones are skipped. They run on the server's threads, those of one
 * connection one after the other. onopen runs before the reply to the upgrade is sent, so a client that has
 * read the reply is known already. Exceptions from callbacks are logged in the system log.
 */
struct WebSocketService {
    std::function<void(const std::shared_ptr<WebSocketChannel>&, const std::shared_ptr<HttpRequest>&)> onopen;
    std::function<void(const std::shared_ptr<WebSocketChannel>&, const std::string&)> onmessage;
    std::function<void(const std::shared_ptr<WebSocketChannel>&)>
        onclose;            ///< once for each onopen, unless a callback hangs at a stop
    int ping_interval = 0;  ///< no effect: the library sends no pings
};

}  // namespace hv
