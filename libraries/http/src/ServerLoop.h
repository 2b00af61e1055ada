#pragma once

#include "libraries/http/src/EventThreads.h"
#include "libraries/http/src/Limits.h"
#include "libraries/http/src/ServerSocket.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <vector>

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

namespace hv::internal {

class Server;
class ServerLoop;

using Clock = std::chrono::steady_clock;

/**
 * One accepted connection, of any protocol. Belongs to one event loop of its server: call its functions
 * there, except where they say otherwise.
 */
class ServerConnection {
  public:
    explicit ServerConnection(ServerLoop& loop);
    virtual ~ServerConnection();
    ServerConnection(const ServerConnection&) = delete;
    ServerConnection& operator=(const ServerConnection&) = delete;

    /** Ends the connection at once; does nothing when it has ended. */
    virtual void Close() = 0;

    /** Called when the deadline has passed. */
    virtual void Expire() { Close(); }

    /** Called when the server stops: ends the connection unless a task is working on it. */
    virtual void Stop() = 0;

    /** Whether it may be closed to make room for another. */
    virtual bool IsExpendable() const = 0;

    /** When it expires; Clock::time_point::max() for never. */
    Clock::time_point Deadline() const { return m_deadline; }

    /** The address for which it takes a permanent place; null while it takes none. */
    virtual const boost::asio::ip::address* Holder() const { return nullptr; }

    /** When it last did something. */
    Clock::time_point LastUse() const { return m_lastUse; }

  protected:
    /** Call it when the connection has ended; a second call is allowed. */
    void Leave();

    ServerLoop& m_loop;
    Server& m_server;
    Clock::time_point m_deadline = Clock::time_point::max();
    Clock::time_point m_lastUse = Clock::now();

  private:
    friend class ServerLoop;
    static constexpr std::size_t kNoSlot = ~std::size_t{0};
    std::size_t m_slot = kNoSlot;
};

/** One event loop of a server, with the connections that live on it. */
class ServerLoop {
  public:
    /** @param capacity  maximum number of connections */
    ServerLoop(Server& server, TaskLimit& limit, std::size_t capacity);

    Server& Owner() const { return m_server; }
    EventThreads& Threads() { return m_threads; }
    boost::asio::io_context& Context() { return m_threads.Context(); }

    /** Number of connections that are here or on their way. Any thread. */
    std::size_t Load() const { return m_load; }

    /**
     * Takes over an accepted socket, which was made for this loop. When the loop is full, it closes an idle
     * connection, or else the new one. Any thread.
     */
    void Adopt(Socket socket, const boost::asio::ip::tcp::endpoint& peer);

    /**
     * Closes the connections that have been idle longest, but none that was used within this time. On the
     * loop. @return whether any was closed
     */
    bool MakeRoom(std::size_t count, Limits::Time age);

    /**
     * Whether the address may have one more permanent connection. When it has its share already, its oldest
     * silent connection is closed for the new one. Connections in use stay, and may take up to half of the
     * loop's capacity. On the loop.
     */
    bool MakeRoomFor(const boost::asio::ip::address& holder);

    /** Closes the connections, and ends the loop with the last of them. On the loop. */
    void Stop();

    /** Buffer to receive into; on the loop, and only until the end of the event. */
    std::array<char, std::size_t{64} * 1024>& Scratch() { return m_scratch; }

  private:
    friend class ServerConnection;

    bool HasRoom(const boost::asio::ip::tcp::endpoint& peer);
    void Sweep();
    void Enter(ServerConnection& connection);
    void Forget(ServerConnection& connection);
    void FinishIfEmpty();

    Server& m_server;
    const std::size_t m_capacity;
    std::array<char, std::size_t{64} * 1024> m_scratch{};
    std::vector<ServerConnection*> m_connections;
    std::atomic<std::size_t> m_load{0};
    bool m_sweeping = false;
    bool m_stopping = false;
    EventThreads m_threads;
    boost::asio::steady_timer m_sweepTimer;
};

}  // namespace hv::internal
