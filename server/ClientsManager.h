#pragma once

#include "platform/Mutex.h"

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include <hv/WebSocketChannel.h>

/**
 * The register of open WebSocket connections, counted by the address of the client machine.
 *
 * A write request is accepted only from a machine that has at least one. Any thread may call.
 */
class CClientsManager {
  public:
    /** The only register of the process, never null. */
    static CClientsManager* GetInstance();

    CClientsManager() = default;

    /** Counts a connection that has opened. */
    void AddClient(const std::shared_ptr<hv::WebSocketChannel>& channel);

    /** Removes a connection that has closed from the count; one that was never added is no error. */
    void DeleteClient(const std::shared_ptr<hv::WebSocketChannel>& channel);

    /** True when the machine with this IP text has an open connection. "localhost" is never a key. */
    bool IsClientConnected(std::string host) const;

    /** How many connections are open. */
    std::size_t Count() const;

  private:
    mutable CSharedMutex m_channelsLock;
    std::unordered_set<std::shared_ptr<hv::WebSocketChannel>> m_channels GUARDED_BY(m_channelsLock);
    mutable CSharedMutex m_hostCountsLock;
    std::unordered_map<std::string, int> m_hostCounts GUARDED_BY(m_hostCountsLock);
};

/** Answers "heartbeat" with "heartbeat" on the same channel; any other message is ignored. */
void OnWebSocketMessage(const std::shared_ptr<hv::WebSocketChannel>& channel, const std::string& text);

/** The host of a peer address: "10.0.0.5:51234" gives "10.0.0.5", "[fe80::1]:51234" gives "fe80::1". */
std::string ExtractPeerHost(const std::string& text);
