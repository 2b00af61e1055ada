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
 * A listener and the devices that connected to it. Records that differ in their remote pair share it: a
 * command goes to the devices whose address the record names, or to all.
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
        std::string_view rest;  ///< what is still to be written of the command under way
        bool writable = false;
        bool expected = false;  ///< the handler of its link is about to come
    };
    bool IsIdle() const override { return !m_acceptor.is_open(); }

    int Listen();
    int TryListen();
    void Accept();
    void OnAccepted(const boost::system::error_code& code, boost::asio::ip::tcp::socket& socket);
    void AcceptLater();

    void Watch(std::uint64_t id, SPeer& peer);
    /** False when the peer has gone, and is forgotten then. */
    bool Look(std::uint64_t id);
    /** The same for all that are meant by a call, which waits for what their handlers know. @return as
     * WaitUntil */
    int LookAndWait(Lock& lock, std::set<std::uint64_t>& targets);
    void Forget(std::uint64_t id, std::string_view why, int error);

    /** Gives the command to all devices that are meant, without waiting. @return those that are */
    std::set<std::uint64_t> Targets(const Addresses& meant) const;
    int WriteToAll(Lock& lock, std::set<std::uint64_t> targets, std::string_view bytes,
                   Clock::time_point deadline);
    /** Writes on to each laggard that can take more. @return how many have got everything */
    int WriteOn(std::set<std::uint64_t>& laggards, int& error);
    bool AnyWritable(const std::set<std::uint64_t>& laggards) const;

    const SNetPortConfig m_record;
    boost::asio::ip::tcp::acceptor m_acceptor;
    boost::asio::steady_timer m_pause;
    std::map<std::uint64_t, SPeer> m_peers;
    std::uint64_t m_lastId = 0;
};

}  // namespace comm
