#include "libraries/comm/TcpDelivery.h"

#include <algorithm>

namespace comm {

CTcpServer::CDelivery::CDelivery(CTcpServer& server, const std::set<std::uint64_t>& targets,
                                 std::string_view bytes)
    : m_server(server) {
    for (const auto id : targets) {
        m_rests.emplace(id, bytes);
    }
}

CTcpServer::CDelivery::~CDelivery() {
    for (const auto& [id, rest] : m_rests) {
        const auto peer = m_server.m_peers.find(id);
        if (peer != m_server.m_peers.end() && peer->second.writer == this) {
            m_server.m_peers.erase(peer);
            m_server.m_changed.notify_all();
        }
    }
}

EnError CTcpServer::CDelivery::Run(Lock& lock, Clock::time_point deadline) {
    for (Advance(); !m_rests.empty(); Advance()) {
        const EnError error = m_server.WaitUntil(lock, NextLook(deadline), [this] {
            AssertLocked();
            return IsReady();
        });
        if (error == ErrorCut) {
            return error;
        }
        if (error == ErrorTimedOut && Clock::now() >= deadline) {
            GiveUp();
            break;
        }
    }
    return m_served ? ErrorNone : m_lastError;
}

void CTcpServer::CDelivery::Advance() {
    for (auto at = m_rests.begin(); at != m_rests.end();) {
        const auto peer = m_server.m_peers.find(at->first);
        bool isDone = true;
        if (peer == m_server.m_peers.end()) {
            m_lastError = ErrorReset;  // it went while it was waited for
        } else {
            isDone = AdvanceTo(at->first, peer->second, at->second);
        }
        at = isDone ? m_rests.erase(at) : std::next(at);
    }
}

bool CTcpServer::CDelivery::AdvanceTo(std::uint64_t id, SPeer& peer, std::string_view& rest) {
    const auto now = Clock::now();
    const auto patience = now + m_server.m_context.settings.stallPause;
    if (peer.writer == nullptr) {
        peer.writer = this;
        peer.writable = true;
        peer.patience = patience;
    }
    if (peer.writer != this) {
        if (now < peer.patience) {
            return false;
        }
        m_lastError = ErrorTimedOut;  // the command that has the turn gets no further
        return true;
    }
    if (!peer.writable) {
        return false;
    }
    const std::size_t before = rest.size();
    if (const EnError error = peer.link.Write(rest); error != ErrorNone) {
        m_lastError = error;
        m_server.Forget(id, "connection lost", error);
        return true;
    }
    if (rest.empty()) {
        m_served = true;
        peer.writer = nullptr;
        m_server.m_changed.notify_all();
        return true;
    }
    if (rest.size() < before) {
        peer.patience = patience;
    }
    peer.writable = false;
    peer.link.WhenWritable([self = m_server.shared_from_this(), &server = m_server, id] {
        const Lock lock(server.m_mutex);
        if (const auto waiting = server.m_peers.find(id); waiting != server.m_peers.end()) {
            waiting->second.writable = true;
            server.m_changed.notify_all();
        }
    });
    return false;
}

bool CTcpServer::CDelivery::IsReady() const {
    return std::any_of(m_rests.begin(), m_rests.end(),
                       [this](const auto& row) REQUIRES_LOCK(m_server.m_mutex) {
                           const auto found = m_server.m_peers.find(row.first);
                           if (found == m_server.m_peers.end()) {
                               return true;
                           }
                           const SPeer& peer = found->second;
                           return peer.writer == nullptr || (peer.writer == this && peer.writable);
                       });
}

Clock::time_point CTcpServer::CDelivery::NextLook(Clock::time_point deadline) const {
    for (const auto& [id, rest] : m_rests) {
        const auto peer = m_server.m_peers.find(id);
        if (peer != m_server.m_peers.end() && peer->second.writer != this) {
            deadline = std::min(deadline, peer->second.patience);
        }
    }
    return deadline;
}

void CTcpServer::CDelivery::GiveUp() {
    m_lastError = ErrorTimedOut;
    for (const auto& [id, rest] : m_rests) {
        const auto peer = m_server.m_peers.find(id);
        if (peer != m_server.m_peers.end() && peer->second.writer == this) {
            m_server.Forget(id, "takes no more data, connection closed", ErrorTimedOut);
        }
    }
}

}  // namespace comm
