#include "libraries/http/src/ServerLoop.h"

#include "libraries/http/src/HttpConnection.h"
#include "libraries/http/src/Server.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include <boost/asio/dispatch.hpp>

namespace hv::internal {

namespace asio = boost::asio;
using boost::system::error_code;

namespace {

/** Counts a connection while it is on its way to its loop. */
class Arrival {
  public:
    explicit Arrival(std::atomic<std::size_t>& load) : m_load(&load) { ++*m_load; }
    ~Arrival() {
        if (m_load != nullptr) {
            --*m_load;
        }
    }
    Arrival(Arrival&& other) noexcept : m_load(std::exchange(other.m_load, nullptr)) {}
    Arrival(const Arrival&) = delete;
    Arrival& operator=(const Arrival&) = delete;
    Arrival& operator=(Arrival&&) = delete;

  private:
    std::atomic<std::size_t>* m_load;
};

}  // namespace

ServerConnection::ServerConnection(ServerLoop& loop) : m_loop(loop), m_server(loop.Owner()) {
    m_loop.Enter(*this);
}

ServerConnection::~ServerConnection() {
    m_loop.Forget(*this);
}

void ServerConnection::Leave() {
    m_loop.Forget(*this);
    m_loop.FinishIfEmpty();
}

ServerLoop::ServerLoop(Server& server, TaskLimit& limit, std::size_t capacity)
    : m_server(server), m_capacity(capacity), m_threads(limit), m_sweepTimer(m_threads.Context()) {}

void ServerLoop::Adopt(Socket socket, const asio::ip::tcp::endpoint& peer) {
    asio::dispatch(Context(), [this, arrival = Arrival(m_load), socket = std::move(socket), peer]() mutable {
        if (HasRoom(peer)) {
            SetConnectionOptions(socket);
            std::make_shared<HttpConnection>(*this, std::move(socket), peer)->Start();
        }
    });
}

bool ServerLoop::HasRoom(const asio::ip::tcp::endpoint& peer) {
    if (m_connections.size() < m_capacity) {
        return true;
    }
    const bool isMade = MakeRoom(1, Limits::Time(0));
    if (!isMade || m_server.WebSockets() != nullptr) {
        m_server.ShortPlaces().Count(
            "all " + std::to_string(m_capacity) + " are taken; " +
            (isMade ? "a silent one was closed for one from " : "refused a connection from ") +
            peer.address().to_string());
    }
    return isMade;
}

bool ServerLoop::MakeRoomFor(const asio::ip::address& holder) {
    std::size_t held = 0;
    ServerConnection* oldest = nullptr;
    for (ServerConnection* connection : m_connections) {
        if (const auto* its = connection->Holder(); its != nullptr && *its == holder) {
            ++held;
            const bool isOlder = oldest == nullptr || connection->LastUse() < oldest->LastUse();
            oldest = connection->IsExpendable() && isOlder ? connection : oldest;
        }
    }
    if (held < m_server.Bounds().webSocketsOfAddress) {
        return true;
    }
    if (oldest != nullptr) {
        oldest->Close();
    } else if (held < m_capacity / 2) {
        return true;
    }
    m_server.ShortPlaces().Count(holder.to_string() + " has " + std::to_string(held) +
                                 " WebSocket connections; " +
                                 (oldest != nullptr ? "closed a silent one for a new one"
                                                    : "refused a new one, since none of them is silent"));
    return oldest != nullptr;
}

bool ServerLoop::MakeRoom(std::size_t count, Limits::Time age) {
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

void ServerLoop::Stop() {
    m_stopping = true;
    const auto connections = m_connections;
    for (ServerConnection* connection : connections) {
        connection->Stop();
    }
    FinishIfEmpty();
}

void ServerLoop::Sweep() {
    m_sweepTimer.expires_after(m_server.Bounds().sweep);
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
            connection->Expire();
        }
        m_server.TellCounts(m_connections.empty());
        m_server.Memory().Look();
        if (!m_connections.empty() || m_server.Memory().IsDue()) {
            Sweep();
        }
    });
    m_sweeping = true;
}

void ServerLoop::Enter(ServerConnection& connection) {
    if (!m_sweeping) {
        Sweep();
    }
    m_connections.push_back(&connection);
    connection.m_slot = m_connections.size() - 1;
    ++m_load;
}

void ServerLoop::Forget(ServerConnection& connection) {
    const std::size_t slot = std::exchange(connection.m_slot, ServerConnection::kNoSlot);
    if (slot == ServerConnection::kNoSlot) {
        return;
    }
    --m_load;
    ServerConnection* last = m_connections.back();
    m_connections.pop_back();
    if (last != &connection) {
        m_connections[slot] = last;
        last->m_slot = slot;
    }
}

void ServerLoop::FinishIfEmpty() {
    if (m_stopping && m_connections.empty()) {
        m_threads.Finish();
    }
}

}  // namespace hv::internal
