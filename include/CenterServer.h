#pragma once

#include "include/GlobalConfig.h"

#include <hv/HttpServer.h>
#include <hv/HttpService.h>
#include <hv/WebSocketServer.h>

class CClientsManager;

/**
 * The server that the module exports: an HTTP server for the browser application and its JSON calls, and a
 * WebSocket server that browsers keep a connection to.
 *
 * @code
 *   CCenterServer server;     // the process-wide client register and configuration
 *   server.InitServer();      // documents are loaded, saved network ports opened, routes bound
 *   server.Running();         // listens; returns at once
 *   ...                       // the host keeps its main thread alive
 *   server.StopServer();
 * @endcode
 *
 * The operations are called from one thread, in this order. Request handlers and WebSocket callbacks run on
 * threads of the HTTP library. A copy duplicates all members: its records and callbacks keep referring to the
 * source, so the source has to outlive it and only one of the two may be run.
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
     * Loads the documents, opens the network ports of the saved interfaces (3 s at most, in which a port that
     * does not answer is passed over) and binds the routes. Starts no listener.
     * @throw nlohmann::json::type_error  when a document holds something that can't be used; standard error
     * names it
     */
    void InitServer();

    /** Starts the WebSocket server, then the HTTP server, and returns at once. A failure is told in the log.
     */
    void Running();

    /** Stops the HTTP server, then the WebSocket server; two seconds at most for each. */
    void StopServer();

  private:
    CClientsManager* m_clientsManager;
    const SGlobalConfig* m_config;
    hv::WebSocketService m_wsService;
    http_server_s m_wsServer;
    hv::HttpService m_httpService;
    http_server_s m_httpServer;
};
