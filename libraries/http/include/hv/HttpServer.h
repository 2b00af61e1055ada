#pragma once

#include <cstdint>

#include <hv/HttpService.h>

namespace hv {
struct WebSocketService;
}

/**
 * Record of one server, one port. Constructed with the library's defaults; may be copied memberwise, and then
 * only one of the copies may be run.
 */
struct http_server_s {
    char host[64] = "0.0.0.0";                ///< address to listen on
    int port = 0;                             ///< 0: no listener
    int https_port = 0;                       ///< TLS is not supplied: only 0
    int http_version = 1;                     ///< HTTP/1.1 (and 1.0)
    int worker_processes = 0;                 ///< only 0
    int worker_threads = 0;                   ///< handlers that run at once at most; 0: as many as cores
    std::uint32_t worker_connections = 1024;  ///< connections for each worker thread at most; the one that
                                              ///< has been idle longest makes room for a new one
    hv::HttpService* service = nullptr;       ///< not owned
    hv::WebSocketService* ws = nullptr;       ///< not owned
    void* privdata = nullptr;                 ///< of the library: names the running server
};

using http_server_t = http_server_s;

/**
 * Starts a server on threads of its own. It takes copies of the routes, handlers and callbacks.
 *
 * Handlers run on worker_threads threads at most, further requests for handlers wait; files, WebSocket
 * traffic and new connections don't. A POST or an upgrade to WebSocket with an Origin (RFC 6454) whose host
 * name is not that of Host or X-Forwarded-Host, or with a Host that may be a name of somebody else, is
 * answered 403, of which the system log tells once a minute; a handler that throws 500, with a line each.
 * Requests that two readers could understand differently are refused (RFC 9112, 11.2), as are those beyond
 * the library's limits.
 *
 * @param wait  0: returns when it listens; other: returns when it was stopped
 * @return 0, or a negative code: -22 when the address can't be listened on. A port of 0 starts nothing and
 * gives 0.
 *
 * Calls for different records may come from any thread.
 */
int http_server_run(http_server_t* server, int wait = 1);

/**
 * Stops a server: no listener afterwards, connections are closed, handlers that run get two seconds.
 * May be called twice, or on a server that never ran. Not from a handler.
 * @return 0
 */
int http_server_stop(http_server_t* server);
