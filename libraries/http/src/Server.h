#pragma once

#include "libraries/http/src/DiskThreads.h"
#include "libraries/http/src/Housekeeper.h"
#include "libraries/http/src/Limits.h"
#include "libraries/http/src/ServerLoop.h"
#include "libraries/http/src/ServiceRoutes.h"
#include "libraries/http/src/StaticFiles.h"
#include "libraries/http/src/Tally.h"
#include "platform/Mutex.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <boost/asio/steady_timer.hpp>
#include <hv/WebSocketServer.h>

namespace hv::internal {

/**
 * One listening server: its routes, and its event loops, which share the connections evenly. The first loop
 * also accepts connections.
 */
class Server : public std::enable_shared_from_this<Server> {
  public:
    /** Copies everything to which the record points. */
    explicit Server(const http_server_s& record);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /**
     * Listens and starts the threads.
     * @return false when the address is not valid
     * @throw std::system_error when the system refuses the port or a thread
     */
    bool Start();

    /** Ends everything; running handlers get the grace period. Any thread but the server's own; once. */
    void Stop();

    /** Closes some idle connections, since descriptors have run out. Any thread. */
    void AskForRoom();

    /** Waits until a stop is over. */
    void WaitUntilStopped();

    const Limits& Bounds() const { return m_limits; }
    const ServiceRoutes& Routes() const { return m_routes; }
    const StaticFiles& Files() const { return m_files; }

    /** The threads that wait for the disk instead of the loops. */
    DiskThreads& Disk() { return m_disk; }

    /** Callbacks of a WebSocket server; null for an HTTP server. */
    const WebSocketService* WebSockets() const { return m_webSockets ? &*m_webSockets : nullptr; }

    /**
     * Writes that were dropped because they waited too long or their clients had disconnected. Any thread.
     */
    Tally& StaleWrites() { return m_staleWrites; }
    Tally& ShortPlaces() { return m_shortPlaces; }

    /** Notified when a large request or reply has ended. Any thread. */
    Housekeeper& Memory() { return m_memory; }

    /** Requests that were refused because their bodies would have taken too much memory. Any thread. */
    Tally& RefusedBodies() { return m_refusedBodies; }

    /**
     * Requests of pages that may not send them: of other hosts, and of unknown names of this one. Any thread.
     */
    Tally& OtherPages() { return m_otherPages; }
    Tally& UnknownHosts() { return m_unknownHosts; }

    /** Writes the pending lines of all these. @param isIdle  nobody is connected. Any thread. */
    void TellCounts(bool isIdle);

    /** Whether a stop has begun. Any thread. */
    bool IsStopping() const { return m_stopping; }

    /** Whether a stop is over: threads that still run were abandoned. Any thread. */
    bool IsGone() const { return m_gone; }

  private:
    class AcceptGuard;

    void Accept();

    /**
     * Calls first, accepts all waiting connections, and continues to accept; after a pause, if one of these
     * returns false.
     */
    template <typename First>
    void AcceptAll(First first);
    bool AcceptWaiting();

    /** Passes a new connection to a loop. @return false when the system has no room for any at present */
    bool Take(ServerLoop& loop, const boost::system::error_code& error, Socket socket,
              const boost::asio::ip::tcp::endpoint& peer);
    void AcceptLater();
    void ReportExhaustion(const boost::system::error_code& error);
    ServerLoop& LeastLoaded();
    void StopOnFirstLoop();

    const Limits m_limits;
    const std::string m_host;
    const int m_port;
    const ServiceRoutes m_routes;
    const StaticFiles m_files;
    std::optional<WebSocketService> m_webSockets;
    std::atomic<bool> m_stopping{false};
    std::atomic<bool> m_gone{false};
    // Not m_gone.wait(): with MinGW's library under Wine, its wake-ups are lost now and then.
    CMutex m_goneMutex;
    std::condition_variable m_goneSignal;
    Clock::time_point m_lastExhaustion = Clock::time_point();
    Tally m_staleWrites{"Dropped a write that waited for a place"};
    Tally m_shortPlaces{"Places for connections are short", std::chrono::minutes(1)};
    Tally m_refusedBodies{"Not enough memory for the body of"};
    Tally m_otherPages{"Refused for a page of another host", m_limits.refusedPages};
    Tally m_unknownHosts{"Refused for a page that was loaded under an unknown name", m_limits.refusedPages};
    Housekeeper m_memory;
    TaskLimit m_tasks;
    DiskThreads m_disk;
    std::vector<std::unique_ptr<ServerLoop>> m_loops;
    Acceptor m_acceptor;
    boost::asio::ip::tcp::endpoint m_peer;  // of the connection that is waited for
    boost::asio::steady_timer m_acceptTimer;
};

/** Makes every server of the process close some idle connections. Any thread. */
void AskForRoomEverywhere();

}  // namespace hv::internal
