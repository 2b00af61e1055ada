#pragma once

#include "libraries/http/src/EventThreads.h"
#include "libraries/http/src/Limits.h"
#include "libraries/http/src/RouteTable.h"
#include "libraries/http/src/SocketOptions.h"
#include "libraries/http/src/StaticFiles.h"

#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/asio/steady_timer.hpp>
#include <hv/WebSocketServer.h>

namespace hv::internal {

class Server;

using Clock = std::chrono::steady_clock;

/**
 * One accepted connection, whatever it speaks. Belongs to the event loop of its server: its functions are
 * called there, except where they say otherwise.
 */
class ServerConnection {
  public:
    explicit ServerConnection(Server& server);
    virtual ~ServerConnection();
    ServerConnection(const ServerConnection&) = delete;
    ServerConnection& operator=(const ServerConnection&) = delete;

    /** Ends the connection at once; nothing when it has ended. */
    virtual void Close() = 0;

    /** The server stops: ends what no task is working on. */
    virtual void Stop() = 0;

    /** Whether it may be closed to make room for another. */
    virtual bool IsExpendable() const = 0;

    /** When it is to be closed; Clock::time_point::max() for never. */
    Clock::time_point Deadline() const { return m_deadline; }

    /** When it last did something. */
    Clock::time_point LastUse() const { return m_lastUse; }

  protected:
    /** To be called when the connection has ended. May be called twice. */
    void Leave();

    Server& m_server;
    Clock::time_point m_deadline = Clock::time_point::max();
    Clock::time_point m_lastUse = Clock::now();

  private:
    friend class Server;
    static constexpr std::size_t g_noSlot = ~std::size_t{0};
    std::size_t m_slot = g_noSlot;
};

/** One listening server: its routes, its connections, its threads. */
class Server : public std::enable_shared_from_this<Server> {
  public:
    /** Takes copies of what the record points to. */
    explicit Server(const http_server_s& record);

    /** Listens and starts the threads. @return whether the address could be listened on */
    bool Start();

    /** Ends everything; handlers that run get the time of grace. Any thread but the server's own; once. */
    void Stop();

    /** Closes some idle connections, since descriptors have run out. Any thread. */
    void AskForRoom();

    /** Waits until a stop is over. */
    void WaitUntilStopped();

    const Limits& Bounds() const { return m_limits; }
    const RouteTable& Routes() const { return m_routes; }
    const StaticFiles& Files() const { return m_files; }
    EventThreads& Threads() { return m_threads; }

    /** Callbacks of a WebSocket server; null for an HTTP server. */
    const WebSocketService* WebSockets() const { return m_webSockets ? &*m_webSockets : nullptr; }

    /** Room to receive into; on the loop, and only until the end of the event. */
    std::array<char, std::size_t{64} * 1024>& Scratch() { return m_scratch; }

    /** Whether a stop has begun. Any thread. */
    bool IsStopping() const { return m_stopping; }

    /** Whether a stop is over: what still runs has been left to itself. Any thread. */
    bool IsGone() const { return m_gone; }

  private:
    friend class ServerConnection;

    void Accept();
    void AcceptAll();
    bool AcceptWaiting();
    void AcceptLater();
    void ReportExhaustion(const boost::system::error_code& error);
    bool MakeRoom(std::size_t count, Limits::Time age);
    void Sweep();
    void StopOnLoop();
    void Enter(ServerConnection& connection);
    void Forget(ServerConnection& connection);
    void FinishIfEmpty();

    const Limits m_limits;
    const std::string m_host;
    const int m_port;
    const std::size_t m_maxConnections;
    const RouteTable m_routes;
    const StaticFiles m_files;
    std::optional<WebSocketService> m_webSockets;
    std::array<char, std::size_t{64} * 1024> m_scratch{};
    std::vector<ServerConnection*> m_connections;
    std::atomic<bool> m_stopping{false};
    std::atomic<bool> m_gone{false};
    bool m_sweeping = false;
    Clock::time_point m_lastExhaustion = Clock::time_point();
    EventThreads m_threads;
    Acceptor m_acceptor;
    boost::asio::steady_timer m_sweepTimer;
    boost::asio::steady_timer m_acceptTimer;
};

/** Has every server of the process close some idle connections. Any thread. */
void AskForRoomEverywhere();

/** Sends one line to the system log. Any thread. */
void ReportError(const std::string& text);

}  // namespace hv::internal
