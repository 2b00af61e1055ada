#pragma once

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

    int Open(const SNetPortConfig& record) override;
    int Send(const SNetPortConfig& record, std::string_view bytes) override;
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

    bool IsIdle() const override { return !m_acceptor.is_open(); }

    int Listen();
    int TryListen();
    void Accept();
    void OnDevice(boost::system::error_code code);
    void AcceptLater();

    void Watch(std::uint64_t id, SPeer& peer);
    /** Looks whether the peer has gone; it is forgotten then. */
    CTcpLink::EnPeer Look(std::uint64_t id);
    /** The same for all that are meant by a call, which waits for what their handlers know; takes those that
     * have gone off targets. @return as LookUntil */
    int LookAndWait(Lock& lock, Clock::time_point deadline, std::set<std::uint64_t>& targets);
    void Forget(std::uint64_t id, std::string_view why, int error);

    /** The devices that are meant; none given: all. */
    std::set<std::uint64_t> Targets(const Addresses& meant) const;

    const SNetPortConfig m_record;
    boost::asio::ip::tcp::acceptor m_acceptor;
    boost::asio::ip::tcp::socket m_next;  ///< of the device that is waited for
    bool m_accepting = false;             ///< the next device is waited for, or will be after a pause
    boost::asio::steady_timer m_pause;
    std::map<std::uint64_t, SPeer> m_peers;
    std::uint64_t m_lastId = 0;
};

}  // namespace comm
