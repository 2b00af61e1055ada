#pragma once

#include "libraries/comm/NetPort.h"
#include "libraries/comm/TcpLink.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace comm {

/** A connection to one device, made when it is needed and made anew when the device ended it. */
class CTcpClient final : public CNetPort {
  public:
    CTcpClient(const SNetContext& context, const SNetPortConfig& record);

    int Open(const SNetPortConfig& record) override;
    int Send(const SNetPortConfig& record, std::string_view bytes) override;
    void Close() override;

  private:
    /** Connects, if it is not connected: once for all calls that wait for it. */
    int MakeConnected();

    /** Connects, in the turn of a call. */
    int Connect(Lock& lock, Clock::time_point deadline);
    int ConnectToHost(Lock& lock, Clock::time_point deadline);
    int ConnectTo(Lock& lock, const boost::asio::ip::tcp::endpoint& device, Clock::time_point deadline);
    int OpenSocket(const boost::asio::ip::tcp::endpoint& device);

    /** Writes all bytes. @param taken whether the system took some of them, when it failed */
    int Write(Lock& lock, std::string_view bytes, Clock::time_point deadline, bool& taken);

    /** Code of an attempt that failed a moment ago, which a send returns without another one; 0: none. */
    int RecentFailure() const;

    void Watch();
    void OnReadable();

    /** Looks whether the device ended the connection. */
    void Look();

    /** The same for a call, which waits for the news where the handler under way has them. @return as
     * WaitUntil */
    int LookAndWait(Lock& lock);

    /** Forgets the connection, which the device ended or the network broke. */
    void Lose(int error, bool ended);

    /** Closes the connection from here. */
    void Drop();

    const SNetPortConfig m_record;
    std::unique_ptr<CTcpLink> m_link;  ///< null when not connected and not connecting
    std::uint64_t m_generation = 0;    ///< tells handlers of an earlier link from those of this one
    bool m_connected = false;
    bool m_writable = false;
    bool m_expected = false;  ///< the handler of WhenReadable is about to come
    bool m_used = false;      ///< a command went out on this connection
    std::optional<int> m_connectResult;
    int m_lostError = 0;
    Clock::time_point m_connectedAt;
    int m_shortLived = 0;  ///< connections in a row that were good for nothing
    int m_failure = 0;     ///< code of the last attempt, 0 after a good one
    Clock::time_point m_failedAt;
};

}  // namespace comm
