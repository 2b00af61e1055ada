#include "libraries/http/src/Server.h"

#include "libraries/http/src/HttpConnection.h"
#include "platform/RavLog.h"

#include <algorithm>
#include <new>
#include <thread>

#include <boost/asio/ip/address.hpp>
#include <boost/asio/post.hpp>

namespace hv::internal {

namespace asio = boost::asio;
using boost::system::error_code;

namespace {

constexpr int g_acceptsPerEvent = 64;
constexpr std::size_t g_roomAfterExhaustion = 16;  // some for the files that others open
constexpr std::chrono::seconds g_exhaustionEpisode{10};
constexpr std::chrono::milliseconds g_memoryPause{10};

bool IsExhaustion(const error_code& error) {
    return error == asio::error::no_descriptors || error == asio::error::no_buffer_space ||
           error == asio::error::no_memory || error == boost::system::errc::too_many_files_open_in_system;
}

/** Starts an operation that the server can't go on without: while the memory for it is missing, again. */
template <typename Start>
void Insist(Start start) {
    for (;;) {
        try {
            start();
            return;
        } catch (const std::bad_alloc&) {
            std::this_thread::sleep_for(g_memoryPause);
        }
    }
}

std::size_t WorkersOf(const http_server_s& record) {
    if (record.worker_threads > 0) {
        return static_cast<std::size_t>(record.worker_threads);
    }
    return std::max<std::size_t>(std::thread::hardware_concurrency(), 1);
}

}  // namespace

void ReportError(const std::string& text) {
    RavLog::WriteSystemLog(RavLog::Error, "HttpServer", text);
}

ServerConnection::ServerConnection(Server& server) : m_server(server) {
    m_server.Enter(*this);
}

ServerConnection::~ServerConnection() {
    m_server.Forget(*this);
}

void ServerConnection::Leave() {
    m_server.Forget(*this);
    m_server.FinishIfEmpty();
}

Server::Server(const http_server_s& record)
    : m_limits(LimitsOfNewServers()),
      m_host(static_cast<const char*>(record.host)),
      m_port(record.port),
      m_maxConnections(WorkersOf(record) * std::max<std::size_t>(record.worker_connections, 1)),
      m_routes(record.service != nullptr ? record.service->routes : std::vector<HttpRoute>()),
      m_files(record.service != nullptr ? record.service->staticFolders : std::vector<HttpStaticFolder>()),
      m_webSockets(record.ws != nullptr ? std::optional(*record.ws) : std::nullopt),
      m_threads(WorkersOf(record)),
      m_acceptor(m_threads.Context()),
      m_sweepTimer(m_threads.Context()),
      m_acceptTimer(m_threads.Context()) {}

bool Server::Start() {
    error_code error;
    const auto address = asio::ip::make_address(m_host.empty() ? "0.0.0.0" : m_host, error);
    if (error || m_port < 0 || m_port > 65535) {
        return false;
    }
    const asio::ip::tcp::endpoint endpoint(address, static_cast<std::uint16_t>(m_port));
    m_acceptor.open(endpoint.protocol(), error);
    if (!error) {
        SetListenerOptions(m_acceptor);
        m_acceptor.bind(endpoint, error);
    }
    if (!error) {
        m_acceptor.listen(asio::socket_base::max_listen_connections, error);
    }
    if (!error) {
        m_acceptor.non_blocking(true, error);
    }
    if (error) {
        return false;
    }
    Accept();
    m_threads.Start(shared_from_this());
    return true;
}

void Server::Stop() {
    asio::post(m_threads.Context(), [this] { StopOnLoop(); });
    if (!m_threads.Join(m_limits.stopGrace)) {
        ReportError("A handler did not end in time and was left behind at the stop of port " +
                    std::to_string(m_port));
    }
    m_gone = true;
    m_gone.notify_all();
}

void Server::WaitUntilStopped() {
    m_gone.wait(false);
}

void Server::StopOnLoop() {
    m_stopping = true;
    error_code ignored;
    m_acceptor.close(ignored);
    m_acceptTimer.cancel();
    const auto connections = m_connections;
    for (ServerConnection* connection : connections) {
        connection->Stop();
    }
    FinishIfEmpty();
}

void Server::Accept() {
    Insist([this] {
        m_acceptor.async_wait(asio::socket_base::wait_read, [this](const error_code& error) {
            if (!error) {
                AcceptAll();
            }
        });
    });
}

void Server::AcceptAll() {
    bool goesOn = false;
    try {
        goesOn = AcceptWaiting();
    } catch (const std::bad_alloc&) {
        // The connection at hand is lost; the others wait until there is memory again.
    }
    goesOn ? Accept() : AcceptLater();
}

bool Server::AcceptWaiting() {
    for (int i = 0; i < g_acceptsPerEvent; ++i) {
        error_code error;
        Socket socket(m_threads.Context());
        asio::ip::tcp::endpoint peer;
        m_acceptor.accept(socket, peer, error);
        if (error == asio::error::would_block || error == asio::error::try_again) {
            break;
        }
        if (IsExhaustion(error)) {
            ReportExhaustion(error);
            if (MakeRoom(g_roomAfterExhaustion, m_limits.acceptPause)) {
                continue;
            }
            AskForRoomEverywhere();
            return false;
        }
        if (error) {
            continue;  // this client has gone again
        }
        if (m_connections.size() >= m_maxConnections && !MakeRoom(1, Limits::Time(0))) {
            continue;
        }
        SetConnectionOptions(socket);
        std::make_shared<HttpConnection>(*this, std::move(socket), peer)->Start();
    }
    return true;
}

void Server::AskForRoom() {
    asio::post(m_threads.Context(), [this] { MakeRoom(g_roomAfterExhaustion, m_limits.acceptPause); });
}

void Server::AcceptLater() {
    Insist([this] {
        m_acceptTimer.expires_after(m_limits.acceptPause);
        m_acceptTimer.async_wait([this](const error_code& cancelled) {
            if (!cancelled) {
                AcceptAll();
            }
        });
    });
}

void Server::ReportExhaustion(const error_code& error) {
    const auto now = Clock::now();
    if (now - std::exchange(m_lastExhaustion, now) > g_exhaustionEpisode) {
        ReportError("No room for a new connection: " + error.message());
    }
}

// Closes the connections that have been idle longest, but none that is younger than the age.
bool Server::MakeRoom(std::size_t count, Limits::Time age) {
    const auto before = Clock::now() - age;
    std::vector<ServerConnection*> idle;
    std::copy_if(m_connections.begin(), m_connections.end(), std::back_inserter(idle),
                 [&](const ServerConnection* connection) {
                     return connection->IsExpendable() && connection->LastUse() <= before;
                 });
    count = std::min(count, idle.size());
    const auto end = idle.begin() + static_cast<std::ptrdiff_t>(count);
    std::partial_sort(idle.begin(), end, idle.end(),
                      [](const ServerConnection* left, const ServerConnection* right) {
                          return left->LastUse() < right->LastUse();
                      });
    std::for_each(idle.begin(), end, [](ServerConnection* connection) { connection->Close(); });
    return count > 0;
}

void Server::Sweep() {
    m_sweeping = true;
    m_sweepTimer.expires_after(m_limits.sweep);
    m_sweepTimer.async_wait([this](const error_code& error) {
        m_sweeping = false;
        if (error) {
            return;
        }
        const auto now = Clock::now();
        std::vector<ServerConnection*> expired;
        std::copy_if(m_connections.begin(), m_connections.end(), std::back_inserter(expired),
                     [&](const ServerConnection* connection) { return connection->Deadline() < now; });
        for (ServerConnection* connection : expired) {
            connection->Close();
        }
        if (!m_connections.empty()) {
            Sweep();
        }
    });
}

void Server::Enter(ServerConnection& connection) {
    connection.m_slot = m_connections.size();
    m_connections.push_back(&connection);
    if (!m_sweeping) {
        Sweep();
    }
}

void Server::Forget(ServerConnection& connection) {
    const std::size_t slot = std::exchange(connection.m_slot, ServerConnection::g_noSlot);
    if (slot == ServerConnection::g_noSlot) {
        return;
    }
    ServerConnection* last = m_connections.back();
    m_connections.pop_back();
    if (last != &connection) {
        m_connections[slot] = last;
        last->m_slot = slot;
    }
}

void Server::FinishIfEmpty() {
    if (m_stopping && m_connections.empty()) {
        m_threads.Finish();
    }
}

}  // namespace hv::internal
