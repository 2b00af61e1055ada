#include "libraries/http/src/Server.h"

#include "libraries/http/src/ErrorReport.h"
#include "libraries/http/src/Insist.h"

#include <algorithm>
#include <new>
#include <string>
#include <system_error>
#include <thread>

#include <boost/asio/ip/address.hpp>
#include <boost/asio/post.hpp>

namespace hv::internal {

namespace asio = boost::asio;
using boost::system::error_code;

namespace {

constexpr int kAcceptsPerEvent = 64;
constexpr std::size_t kRoomAfterExhaustion = 16;  // a reserve for files that others open
constexpr std::chrono::seconds kExhaustionEpisode{10};

bool IsExhaustion(const error_code& error) {
    return error == asio::error::no_descriptors || error == asio::error::no_buffer_space ||
           error == asio::error::no_memory || error == boost::system::errc::too_many_files_open_in_system;
}

std::size_t WorkersOf(const http_server_s& record) {
    if (record.worker_threads > 0) {
        return static_cast<std::size_t>(record.worker_threads);
    }
    return std::max<std::size_t>(std::thread::hardware_concurrency(), 1);
}

/** One per core, as long as there are handlers to keep them busy. WebSockets carry little: one. */
std::size_t LoopsOf(const http_server_s& record) {
    const std::size_t cores = std::max<std::size_t>(std::thread::hardware_concurrency(), 1);
    return record.ws != nullptr ? 1 : std::min(cores, WorkersOf(record));
}

std::vector<std::unique_ptr<ServerLoop>> MakeLoops(Server& server, TaskLimit& tasks,
                                                   const http_server_s& record) {
    const std::size_t connections = WorkersOf(record) * std::max<std::size_t>(record.worker_connections, 1);
    std::vector<std::unique_ptr<ServerLoop>> loops(LoopsOf(record));
    for (auto& loop : loops) {
        loop = std::make_unique<ServerLoop>(server, tasks, (connections + loops.size() - 1) / loops.size());
    }
    return loops;
}

}  // namespace

Limits& LimitsOfNewServers() {
    static Limits limits;
    return limits;
}

Server::Server(const http_server_s& record)
    : m_limits(LimitsOfNewServers()),
      m_host(static_cast<const char*>(record.host)),
      m_port(record.port),
      m_routes(record.service != nullptr ? *record.service : HttpService()),
      m_files(record.service != nullptr ? record.service->staticFolders : std::vector<HttpStaticFolder>()),
      m_webSockets(record.ws != nullptr ? std::optional(*record.ws) : std::nullopt),
      m_tasks(WorkersOf(record)),
      m_loops(MakeLoops(*this, m_tasks, record)),
      m_acceptor(m_loops.front()->Context()),
      m_acceptTimer(m_loops.front()->Context()) {}

Server::~Server() {
    m_tasks.Drop();  // what waits there, and for the disk, belongs to the loops
    m_disk.Drop();
}

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
        // Aborted connections are reported as well; otherwise the connections behind one would wait for the
        // next to come.
        m_acceptor.set_option(asio::socket_base::enable_connection_aborted(true), error);
    }
    if (!error) {
        m_acceptor.bind(endpoint, error);
    }
    if (!error) {
        m_acceptor.listen(asio::socket_base::max_listen_connections, error);
    }
    if (!error) {
        m_acceptor.non_blocking(true, error);
    }
    if (error) {
        throw std::system_error(error, "port " + std::to_string(m_port));
    }
    m_disk.SetOwner(weak_from_this());
    Accept();
    for (auto& loop : m_loops) {
        loop->Threads().Start(shared_from_this());
    }
    return true;
}

void Server::Stop() {
    Insist([this] { asio::post(m_loops.front()->Context(), [this] { StopOnFirstLoop(); }); });
    const auto deadline = Clock::now() + m_limits.stopGrace;
    bool all = true;
    for (auto& loop : m_loops) {
        all = loop->Threads().Join(deadline) && all;
    }
    all = m_disk.Join() && all;
    if (!all) {
        ReportError("A handler or the disk did not end in time and was left behind at the stop of port ",
                    std::to_string(m_port));
    }
    TellCounts(true);
    const CLock lock(m_goneMutex);
    m_gone = true;
    m_goneSignal.notify_all();
}

void Server::TellCounts(bool isIdle) {
    const bool isOver = m_stopping;
    for (Tally* tally : {&m_staleWrites, &m_refusedBodies}) {
        tally->Tell(isIdle || isOver);
    }
    for (Tally* tally : {&m_shortPlaces, &m_otherPages, &m_unknownHosts}) {
        tally->Tell(isOver);
    }
}

void Server::WaitUntilStopped() {
    CUniqueLock lock(m_goneMutex);
    m_goneSignal.wait(lock.Native(), [this] { return m_gone.load(); });
}

// The loops are notified here, and so after the last connection that was sent to them.
void Server::StopOnFirstLoop() {
    m_stopping = true;
    error_code ignored;
    m_acceptor.close(ignored);
    m_acceptTimer.cancel();
    for (auto& loop : m_loops) {
        Insist([&] { asio::post(loop->Context(), [&stopped = *loop] { stopped.Stop(); }); });
    }
}

/**
 * Belongs to a wait for a connection. When the wait ends without a word, which happens when no memory is
 * left for the connection that has come, it makes the server accept again. Otherwise nobody would connect any
 * more.
 */
class Server::AcceptGuard {
  public:
    explicit AcceptGuard(std::weak_ptr<Server> server) : m_server(std::move(server)) {}
    ~AcceptGuard() {
        if (const auto server = m_server.lock()) {
            server->AcceptLater();
        }
    }
    AcceptGuard(AcceptGuard&&) noexcept = default;
    AcceptGuard(const AcceptGuard&) = delete;
    AcceptGuard& operator=(const AcceptGuard&) = delete;
    AcceptGuard& operator=(AcceptGuard&&) = delete;

    /** The wait has told how it ended. */
    void Release() { m_server.reset(); }

  private:
    std::weak_ptr<Server> m_server;
};

void Server::Accept() {
    ServerLoop& loop = LeastLoaded();
    try {
        m_acceptor.async_accept(
            loop.Context(), m_peer,
            [this, &loop, guard = AcceptGuard(weak_from_this())](const error_code& error,
                                                                 Socket socket) mutable {
                guard.Release();
                if (error != asio::error::operation_aborted) {
                    AcceptAll([&] { return Take(loop, error, std::move(socket), m_peer); });
                }
            });
    } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch): the guard has done what is to do
    }
}

template <typename First>
void Server::AcceptAll(First first) {
    bool goesOn = false;
    try {
        goesOn = first() && AcceptWaiting();
    } catch (const std::bad_alloc&) {
        // The connection at hand is lost; the others wait until there is memory again.
    }
    goesOn ? Accept() : AcceptLater();
}

bool Server::AcceptWaiting() {
    for (int i = 0; i < kAcceptsPerEvent; ++i) {
        error_code error;
        ServerLoop& loop = LeastLoaded();
        Socket socket(loop.Context());
        asio::ip::tcp::endpoint peer;
        m_acceptor.accept(socket, peer, error);
        if (error == asio::error::would_block || error == asio::error::try_again) {
            break;
        }
        if (!Take(loop, error, std::move(socket), peer)) {
            return false;
        }
    }
    return true;
}

bool Server::Take(ServerLoop& loop, const error_code& error, Socket socket,
                  const asio::ip::tcp::endpoint& peer) {
    if (IsExhaustion(error)) {
        ReportExhaustion(error);
        if (m_loops.front()->MakeRoom(kRoomAfterExhaustion, m_limits.acceptPause)) {
            return true;
        }
        AskForRoomEverywhere();
        return false;
    }
    if (!error) {  // otherwise this client has gone again
        loop.Adopt(std::move(socket), peer);
    }
    return true;
}

void Server::AskForRoom() {
    for (auto& loop : m_loops) {
        asio::post(loop->Context(),
                   [this, &asked = *loop] { asked.MakeRoom(kRoomAfterExhaustion, m_limits.acceptPause); });
    }
}

void Server::AcceptLater() {
    Insist([this] {
        m_acceptTimer.expires_after(m_limits.acceptPause);
        m_acceptTimer.async_wait([this](const error_code& cancelled) {
            if (!cancelled) {
                AcceptAll([] { return true; });
            }
        });
    });
}

void Server::ReportExhaustion(const error_code& error) {
    const auto now = Clock::now();
    if (now - std::exchange(m_lastExhaustion, now) > kExhaustionEpisode) {
        ReportError("No room for a new connection: ", error.message());
    }
}

ServerLoop& Server::LeastLoaded() {
    return **std::min_element(m_loops.begin(), m_loops.end(), [](const auto& left, const auto& right) {
        return left->Load() < right->Load();
    });
}

}  // namespace hv::internal
