#pragma once

#include <functional>

#include <boost/asio/ip/tcp.hpp>

namespace comm {

/**
 * Has the system look after a silent peer: keep-alive after 10 s of silence, every 3 s, 3 probes, and a bound
 * of 10 s for data that nobody acknowledges, so that a peer that lost its power or its cable is noticed.
 */
void SetKeepAlive(boost::asio::ip::tcp::socket& socket, boost::system::error_code& code);

/** True when the peer has not acknowledged all that was sent; false also where the system doesn't tell. */
bool HasUnacknowledged(boost::asio::ip::tcp::socket& socket);

/**
 * True when the system has something to read, an end perhaps, that it does not hand out yet: it goes to the
 * wait under way first. Always false on Linux, where a read gives what there is.
 */
bool IsReadOnItsWay(boost::asio::ip::tcp::socket& socket);

/**
 * Waits for the next connection to a listener. On Linux the handler comes before it is accepted, since
 * Boost.Asio's own accepting takes memory first and drops the handler when there is none; on Windows, where
 * nobody can wait for a listener, afterwards.
 * @param next  a closed socket, which TakeConnection fills; outlives the wait, as the listener does
 */
void WhenConnecting(boost::asio::ip::tcp::acceptor& acceptor, boost::asio::ip::tcp::socket& next,
                    std::function<void(const boost::system::error_code&)> handler);

/** In that handler: has next hold the connection. A code tells why there is none. */
void TakeConnection(boost::asio::ip::tcp::acceptor& acceptor, boost::asio::ip::tcp::socket& next,
                    boost::system::error_code& code);

/** Lets a listener take a port whose earlier connections are still closing, but never one that is in use. */
void SetListenerReuse(boost::asio::ip::tcp::acceptor& acceptor, boost::system::error_code& code);

}  // namespace comm
