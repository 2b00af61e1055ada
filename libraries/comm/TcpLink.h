#pragma once

#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/PortTally.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include <boost/asio/ip/tcp.hpp>

namespace comm {

/** One end of a TCP connection. It never waits. Its owner does, and guards it with the owner's lock. */
class CTcpLink {
  public:
    using Socket = boost::asio::ip::tcp::socket;

    /** State of the peer, as seen by reading. */
    enum class EnPeer {
        Alive,
        Unknown,  ///< received bytes go to the handler of WhenReadable first
        Ended,    ///< it closed the connection
        Broken,   ///< a reset, or the system gave up the connection
    };

    explicit CTcpLink(Socket socket);

    /**
     * Sets the options of every connection: no delay, a send buffer of 64 KiB, keep-alive, calls that don't
     * block.
     */
    [[nodiscard]] EnError Prepare();

    /** Reads and counts what the peer sent; the tally passes it on. @param error why it is broken, 0
     * otherwise */
    [[nodiscard]] EnPeer Drain(EnError& error, CPortTally& tally);

    /** Sends what the system takes at once, and removes it from rest. @return 0 or an error number */
    [[nodiscard]] EnError Write(std::string_view& rest);

    /** Calls handler(), on the thread of the socket, when there is something to read. */
    template <typename Handler>
    void WhenReadable(Handler handler) {
        When(Socket::wait_read, std::move(handler));
    }

    /** Calls handler(), on the thread of the socket, when the system takes bytes again. */
    template <typename Handler>
    void WhenWritable(Handler handler) {
        When(Socket::wait_write, std::move(handler));
    }

    Socket& GetSocket() { return m_socket; }

  private:
    template <typename Handler>
    void When(Socket::wait_type what, Handler handler) {
        m_socket.async_wait(what, [handler = std::move(handler)](const boost::system::error_code& code) {
            if (code != boost::asio::error::operation_aborted) {
                handler();
            }
        });
    }

    SPortPeer Peer();

    Socket m_socket;
    const std::uint64_t m_number;
    std::string m_peer;  ///< address of the peer, once somebody has asked
};

}  // namespace comm
