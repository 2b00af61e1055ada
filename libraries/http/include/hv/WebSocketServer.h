#pragma once

#include <functional>
#include <memory>
#include <string>

#include <hv/HttpServer.h>
#include <hv/WebSocketChannel.h>
#include <hv/hsocket.h>

namespace hv {

/**
 * Callbacks of a WebSocket server; empty ones are passed over. They run on the server's threads, those of one
 * connection one after the other; onopen before the reply to the upgrade goes out, so that whoever has read
 * that is known. What they throw ends in the system log.
 */
struct WebSocketService {
    std::function<void(const std::shared_ptr<WebSocketChannel>&, const std::shared_ptr<HttpRequest>&)> onopen;
    std::function<void(const std::shared_ptr<WebSocketChannel>&, const std::string&)> onmessage;
    std::function<void(const std::shared_ptr<WebSocketChannel>&)>
        onclose;            ///< once for each onopen, unless a callback hangs at a stop
    int ping_interval = 0;  ///< of no effect: the library sends no pings
};

}  // namespace hv
