#pragma once

#include "include/GlobalConfig.h"

#include <hv/HttpServer.h>
#include <hv/HttpService.h>
#include <hv/WebSocketServer.h>

class CClientsManager;

/**
 * The server that the module exports: an HTTP server for the browser application and its JSON calls, and a
 * WebSocket server to which browsers keep a connection.
 *
 * @code
 *     CCenterServer server;     // the process-wide client register and configuration
 *     server.InitServer();      // documents are loaded, saved network ports opened, routes bound
 *     server.Running();         // listens; returns at once
 *     ...                       // the host keeps its main thread alive
 *     server.StopServer();
 * @endcode
 *
 * Call the operations from one thread, in this order. Request handlers and WebSocket callbacks run on threads
 * of the HTTP library. A copy duplicates all members, but its records and callbacks keep referring to the
 * source. So the source has to outlive the copy, and only one of the two may run.
 */
class SERVER_API CCenterServer {
  public:
    /**
     * @param clients  register of WebSocket clients; not owned; null: the process-wide one
     * @param config   ports and web root; not owned; null: GetConfigInstance(), whose exceptions pass through
     */
    explicit CCenterServer(CClientsManager* clients = nullptr, const SGlobalConfig* config = nullptr);
    CCenterServer(const CCenterServer& other);
    CCenterServer& operator=(const CCenterServer& other);

    /** Stops both servers. Connections to the equipment stay open to the end of the process. */
    virtual ~CCenterServer();

    /**
     * Loads the documents, opens the network ports of the saved interfaces (at most 3 s; a port that does not
     * answer by then is skipped) and binds the routes. Starts no listener.
     * @throw nlohmann::json::type_error  when a document holds something that can't be used; standard error
     * names it
     */
    void InitServer();

    /** Starts the WebSocket server, then the HTTP server, and returns at once. A failure is logged. */
    void Running();

    /** Stops the HTTP server, then the WebSocket server; takes at most two seconds for each. */
    void StopServer();

  private:
    CClientsManager* m_clientsManager;
    const SGlobalConfig* m_config;
    hv::WebSocketService m_wsService;
    http_server_s m_wsServer;
    hv::HttpService m_httpService;
    http_server_s m_httpServer;
};
