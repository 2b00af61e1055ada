#include "libraries/comm/TcpServer.h"

#include "libraries/comm/EndPoint.h"
#include "libraries/comm/TcpDelivery.h"
#include "libraries/comm/TcpSocket.h"

#include <algorithm>

#include <boost/asio/ip/v6_only.hpp>

namespace comm {

using boost::asio::ip::tcp;

CTcpServer::CTcpServer(const SNetContext& context, const SNetPortConfig& record)
    : CNetPort(context, Describe(record)),
      m_record(record),
      m_acceptor(context.io),
      m_next(context.io),
      m_pause(context.io) {}

CNetPort::SOpening CTcpServer::BeginOpen(const SNetPortConfig& /*record*/) {
    SOpening opening;
    const Lock lock(m_mutex);
    opening.error = m_closed ? ErrorCut : Listen();
    return opening;
}

EnError CTcpServer::Deliver(const SNetPortConfig& record, std::string_view bytes) {
    const auto deadline = Deadline();
    Lock lock(m_mutex, SSpinFirst());
    Use(record);
    if (m_closed) {
        return ErrorCut;
    }
    Addresses meant;
    if (!IsAnyAddress(record.dstIpAddress)) {
        const EnError error = Resolve(lock, record.dstIpAddress, deadline, meant);
        if (!IsUser(record)) {
            return ErrorCut;  // it was released meanwhile, and must not open anything again
        }
        if (error != ErrorNone) {
            return error;
        }
    }
    if (const EnError error = Listen(); error != ErrorNone) {
        return error;
    }
    std::set<std::uint64_t> targets = Targets(meant);
    if (LookAndWait(lock, deadline, targets) == ErrorCut) {
        return ErrorCut;
    }
    if (targets.empty()) {
        return ErrorNotConnected;
    }
    CDelivery delivery(*this, targets, bytes);
    delivery.AssertLocked();
    const EnError error = delivery.Run(lock, deadline);
    if (error == ErrorNone) {
        m_tally.TellCommand(bytes, error);
    }
    return error;
}

std::size_t CTcpServer::PeersOf(const SNetPortConfig& record) {
    // A host name counts all: looking it up would wait.
    const auto named = NamedDevice(record.dstIpAddress);
    const Lock lock(m_mutex);
    return Targets(named ? Addresses{*named} : Addresses{}).size();
}

void CTcpServer::Close() {
    const Lock lock(m_mutex);
    m_closed = true;
    boost::system::error_code ignored;  // closing fails only for what is closed already
    m_acceptor.close(ignored);
    m_pause.cancel();
    m_peers.clear();
    m_changed.notify_all();
}

EnError CTcpServer::Listen() {
    if (m_acceptor.is_open()) {
        if (!m_accepting) {
            Accept();  // there was no memory for it before
        }
        return ErrorNone;
    }
    const EnError error = TryListen();
    if (error != ErrorNone) {
        boost::system::error_code ignored;  // what matters is the error of listening
        m_acceptor.close(ignored);
        m_log.Failed("can't listen", error);
        m_tally.Become(EnPortState::Failed, error);
        return error;
    }
    m_log.Note("listening");
    m_tally.Become(EnPortState::Listening);
    Accept();
    return ErrorNone;
}

EnError CTcpServer::TryListen() {
    if (!IsPort(m_record.port, true)) {
        return ErrorNoAddress;
    }
    boost::system::error_code code;
    tcp::endpoint local(tcp::v6(), static_cast<std::uint16_t>(m_record.port));
    if (!IsAnyAddress(m_record.ipAddress)) {
        local.address(boost::asio::ip::make_address(m_record.ipAddress, code));
        if (code) {
            return ErrorNoAddress;
        }
    }
    m_acceptor.open(local.protocol(), code);
    if (code && IsAnyAddress(m_record.ipAddress)) {
        local = tcp::endpoint(tcp::v4(), local.port());  // a system without IPv6
        m_acceptor.open(local.protocol(), code);
    } else if (!code && local.protocol() == tcp::v6()) {
        m_acceptor.set_option(boost::asio::ip::v6_only(!IsAnyAddress(m_record.ipAddress)), code);
    }
    if (!code) {
        SetListenerReuse(m_acceptor, code);
    }
    if (!code) {
        m_acceptor.non_blocking(true, code);
    }
    if (!code) {
        m_acceptor.bind(local, code);
    }
    if (!code) {
        m_acceptor.listen(tcp::acceptor::max_listen_connections, code);
    }
    return SocketError(code);
}

void CTcpServer::Accept() {
    WhenConnecting(m_acceptor, m_next,
                   [self = shared_from_this(), this](const boost::system::error_code& code) {
                       const Lock lock(m_mutex);
                       if (m_closed) {
                           return;
                       }
                       m_accepting = false;
                       try {
                           OnDevice(code);
                       } catch (const std::exception&) {
                           if (!m_accepting) {
                               AcceptLater();
                           }
                       }
                   });
    m_accepting = true;
}

void CTcpServer::OnDevice(boost::system::error_code code) {
    if (!code) {
        TakeConnection(m_acceptor, m_next, code);
    }
    tcp::socket socket = std::move(m_next);
    const bool isNobody = code == boost::asio::error::connection_aborted ||
                          code == boost::asio::error::would_block || code == boost::asio::error::interrupted;
    if (code && !isNobody) {
        AcceptLater();
        m_log.Failed("can't accept a connection", SocketError(code));
        return;
    }
    Accept();
    if (isNobody) {
        return;
    }
    boost::system::error_code gone;
    const auto from = Unmapped(socket.remote_endpoint(gone).address());
    if (gone) {
        return;
    }
    if (m_peers.size() >= m_context.settings.maxPeers) {
        m_log.Failed("too many connections, closed that of " + from.to_string(), ErrorTooManySockets);
        return;
    }
    const auto id = ++m_lastId;
    SPeer& peer = m_peers.try_emplace(id, std::move(socket), from).first->second;
    if (const EnError error = peer.link.Prepare(); error != ErrorNone) {
        Forget(id, "can't set up the connection", error);
        return;
    }
    m_log.Note(from.to_string() + " connected");
    Watch(id, peer);
}

void CTcpServer::AcceptLater() {
    m_pause.expires_after(m_context.settings.acceptPause);
    m_pause.async_wait([self = shared_from_this(), this](const boost::system::error_code&) {
        const Lock lock(m_mutex);
        if (m_closed) {
            return;
        }
        m_accepting = false;  // should it fail again, the next command does it
        Accept();
    });
    m_accepting = true;
}

void CTcpServer::Watch(std::uint64_t id, SPeer& peer) {
    peer.link.WhenReadable([self = shared_from_this(), this, id] {
        const Lock lock(m_mutex);
        const auto found = m_peers.find(id);
        if (found == m_peers.end()) {
            return;
        }
        const auto seen = Look(id);
        if (seen == CTcpLink::EnPeer::Alive || seen == CTcpLink::EnPeer::Unknown) {
            Watch(id, found->second);
        }
    });
}

CTcpLink::EnPeer CTcpServer::Look(std::uint64_t id) {
    EnError error = ErrorNone;
    const auto seen = m_peers.at(id).link.Drain(error, m_tally);
    switch (seen) {
        case CTcpLink::EnPeer::Alive:
        case CTcpLink::EnPeer::Unknown:
            break;
        case CTcpLink::EnPeer::Ended:
            Forget(id, "closed the connection", ErrorNone);
            break;
        case CTcpLink::EnPeer::Broken:
            Forget(id, "connection lost", error);
            break;
    }
    return seen;
}

EnError CTcpServer::LookAndWait(Lock& lock, Clock::time_point deadline, std::set<std::uint64_t>& targets) {
    auto unsure = targets;
    const EnError error = LookUntil(lock, deadline, [&]() REQUIRES_LOCK(m_mutex) {
        std::erase_if(unsure, [this](std::uint64_t id) REQUIRES_LOCK(m_mutex) {
            return !m_peers.contains(id) || Look(id) != CTcpLink::EnPeer::Unknown;
        });
        return unsure.empty();
    });
    std::erase_if(targets, [this](std::uint64_t id) REQUIRES_LOCK(m_mutex) { return !m_peers.contains(id); });
    return error;
}

void CTcpServer::Forget(std::uint64_t id, std::string_view why, EnError error) {
    std::string text = m_peers.at(id).address.to_string() + ": ";
    text += why;
    if (error != ErrorNone) {
        text += ", error " + std::to_string(error);
    }
    m_peers.erase(id);
    m_log.Note(text);
    m_changed.notify_all();
}

std::set<std::uint64_t> CTcpServer::Targets(const Addresses& meant) const {
    std::set<std::uint64_t> targets;
    for (const auto& [id, peer] : m_peers) {
        if (meant.empty() || std::find(meant.begin(), meant.end(), peer.address) != meant.end()) {
            targets.insert(id);
        }
    }
    return targets;
}

}  // namespace comm
