#pragma once

#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/NetPort.h"
#include "libraries/comm/TcpLink.h"

#include <cstdint>
#include <map>
#include <set>
#include <utility>

#include <boost/asio/steady_timer.hpp>

namespace comm {

/**
 * A listener and the devices that connected to it. Records that differ only in their remote pair share it: a
 * command goes to the devices whose address the record names, or to all. Each device has a turn of its own,
 * so that one that stops reading delays no other.
 */
class CTcpServer final : public CNetPort {
  public:
    CTcpServer(const SNetContext& context, const SNetPortConfig& record);

    SOpening BeginOpen(const SNetPortConfig& record) override;
    std::size_t PeersOf(const SNetPortConfig& record) override;
    void Close() override;

  private:
    struct SPeer {
        explicit SPeer(boost::asio::ip::tcp::socket socket, boost::asio::ip::address from)
            : link(std::move(socket)), address(std::move(from)) {}

        CTcpLink link;
        boost::asio::ip::address address;
        const void* writer = nullptr;  ///< the command that has this device's turn
        bool writable = false;         ///< the device may take more of it
        Clock::time_point patience;    ///< until when other commands wait for it
    };

    class CDelivery;

    EnError Deliver(const SNetPortConfig& record, std::string_view bytes) override;
    bool IsIdle() const override REQUIRES_LOCK(m_mutex) { return !m_acceptor.is_open(); }

    EnError Listen() REQUIRES_LOCK(m_mutex);
    [[nodiscard]] EnError TryListen() REQUIRES_LOCK(m_mutex);
    void Accept() REQUIRES_LOCK(m_mutex);
    void OnDevice(boost::system::error_code code) REQUIRES_LOCK(m_mutex);
    void AcceptLater() REQUIRES_LOCK(m_mutex);

    void Watch(std::uint64_t id, SPeer& peer) REQUIRES_LOCK(m_mutex);
    /** Looks whether the peer has disconnected, and forgets it if so. */
    CTcpLink::EnPeer Look(std::uint64_t id) REQUIRES_LOCK(m_mutex);
    /** As Look, for all targets of a call: waits while the news goes to their handlers first, and removes
     * those that have disconnected from targets. @return as LookUntil */
    [[nodiscard]] EnError LookAndWait(Lock& lock, Clock::time_point deadline,
                                      std::set<std::uint64_t>& targets) REQUIRES_LOCK(m_mutex);
    void Forget(std::uint64_t id, std::string_view why, EnError error) REQUIRES_LOCK(m_mutex);

    /** The devices with these addresses; all devices when there are none. */
    std::set<std::uint64_t> Targets(const Addresses& meant) const REQUIRES_LOCK(m_mutex);

    const SNetPortConfig m_record;
    boost::asio::ip::tcp::acceptor m_acceptor GUARDED_BY(m_mutex);
    boost::asio::ip::tcp::socket m_next GUARDED_BY(m_mutex);  ///< socket for the next device
    /** The server waits for the next device, or will after a pause. */
    bool m_accepting GUARDED_BY(m_mutex) = false;
    boost::asio::steady_timer m_pause GUARDED_BY(m_mutex);
    std::map<std::uint64_t, SPeer> m_peers GUARDED_BY(m_mutex);
    std::uint64_t m_lastId GUARDED_BY(m_mutex) = 0;
};

}  // namespace comm
