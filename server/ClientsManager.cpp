#include "server/ClientsManager.h"

#include "server/LogText.h"

#include <algorithm>

#include <hv/hloop.h>
#include <hv/hsocket.h>

namespace {

/** "ip:port" of the other side; empty when the channel has no io handle. */
std::string PeerAddress(const std::shared_ptr<hv::WebSocketChannel>& channel) {
    hio_t* const io = channel->io();
    if (io == nullptr) {
        return {};
    }
    char text[64] = {};
    sockaddr_str(reinterpret_cast<sockaddr_u*>(hio_peeraddr(io)), text, sizeof text);
    return text;
}

}  // namespace

std::string ExtractPeerHost(const std::string& text) {
    const auto colons = std::count(text.begin(), text.end(), ':');
    if (colons == 0) {
        return text;
    }
    if (colons == 1) {
        return text.substr(0, text.find(':'));
    }
    const std::size_t bracket = text.rfind(']');
    if (bracket == std::string::npos) {
        return text.substr(0, text.rfind(':'));
    }
    return text.substr(1, bracket - 1);
}

CClientsManager* CClientsManager::GetInstance() {
    static CClientsManager manager;
    return &manager;
}

void CClientsManager::AddClient(const std::shared_ptr<hv::WebSocketChannel>& channel) {
    const std::string peer = PeerAddress(channel);
    WriteRootLog(RavLog::Info, "CClientsManager::AddClient", FormatLogText("Client connected", peer));
    const std::string host = ExtractPeerHost(peer);
    {
        const CLock lock(m_hostCountsLock);
        ++m_hostCounts[host];
    }
    const CLock lock(m_channelsLock);
    m_channels.insert(channel);
}

void CClientsManager::DeleteClient(const std::shared_ptr<hv::WebSocketChannel>& channel) {
    const std::string peer = PeerAddress(channel);
    WriteRootLog(RavLog::Info, "CClientsManager::DeleteClient", FormatLogText("Client disconnected", peer));
    const std::string host = ExtractPeerHost(peer);
    {
        const CLock lock(m_hostCountsLock);
        const auto row = m_hostCounts.find(host);
        if (row != m_hostCounts.end() && --row->second <= 0) {
            m_hostCounts.erase(row);
        }
    }
    const CLock lock(m_channelsLock);
    m_channels.erase(channel);
}

// By value: that is the operation's signature, and callers pass a temporary.
bool CClientsManager::IsClientConnected(
    std::string host) const {  // NOLINT(performance-unnecessary-value-param)
    const CSharedLock lock(m_hostCountsLock);
    return m_hostCounts.contains(host);
}

std::size_t CClientsManager::Count() const {
    const CSharedLock lock(m_channelsLock);
    return m_channels.size();
}

void OnWebSocketMessage(const std::shared_ptr<hv::WebSocketChannel>& channel, const std::string& text) {
    if (text == "heartbeat") {
        channel->send(text, WS_OPCODE_TEXT, true);
    }
}
