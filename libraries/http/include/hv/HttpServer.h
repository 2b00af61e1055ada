#pragma once

#include <cstdint>

#include <hv/HttpService.h>

namespace hv {
struct WebSocketService;
}

/**
 * Record of one server, one port. The constructor sets the library's defaults. The record may be copied
 * memberwise; then only one of the copies may run.
 */
struct http_server_s {
    char host[64] = "0.0.0.0";                ///< address to listen on
    int port = 0;                             ///< 0: no listener
    int https_port = 0;                       ///< there is no TLS: only 0
    int http_version = 1;                     ///< HTTP/1.1 (and 1.0)
    int worker_processes = 0;                 ///< only 0
    int worker_threads = 0;                   ///< maximum of handlers that run at once; 0: number of cores
    std::uint32_t worker_connections = 1024;  ///< connections for each worker thread at most; the one that
                                              ///< has been idle longest makes room for a new one
    hv::HttpService* service = nullptr;       ///< not owned
    hv::WebSocketService* ws = nullptr;       ///< not owned
    void* privdata = nullptr;                 ///< used by the library: identifies the running server
};

using http_server_t = http_server_s;

/**
 * Starts a server on threads of its own. It copies the routes, handlers and callbacks.
 *
 * Handlers run on at most worker_threads threads. Further requests for handlers wait; files, WebSocket
 * traffic and new connections don't. A POST or an upgrade to WebSocket is answered 403 in two cases: its
 * Origin (RFC 6454) has a host name other than that of Host or X-Forwarded-Host, or its Host could be a name
 * of somebody else. The system log reports that at most once a minute. A handler that throws is answered 500
 * and logged each time. Requests that two readers could understand differently are refused (RFC 9112, 11.2),
 * as are those that exceed the library's limits.
 *
 * @param wait  0: returns when it listens; other: returns when it was stopped
 * @return 0, or a negative code: -22 when the address can't be listened on. A port of 0 starts nothing and
 * gives 0.
 *
 * Calls for different records may come from any thread.
 */
int http_server_run(http_server_t* server, int wait = 1);

/**
 * Stops a server: ends the listener, closes the connections, and gives running handlers two seconds. May be
 * called twice, or on a server that never ran. Not from a handler.
 * @return 0
 */
int http_server_stop(http_server_t* server);
