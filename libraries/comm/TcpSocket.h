#pragma once

#include <functional>

#include <boost/asio/ip/tcp.hpp>

namespace comm {

/**
 * Lets the system watch a silent peer: keep-alive after 10 s of silence, every 3 s, 3 probes, and a limit of
 * 10 s for data that nobody acknowledges, so that a peer that lost its power or its cable is noticed.
 */
void SetKeepAlive(boost::asio::ip::tcp::socket& socket, boost::system::error_code& code);

/** True when the peer has not acknowledged all sent bytes; false also when the system doesn't report it. */
bool HasUnacknowledged(boost::asio::ip::tcp::socket& socket);

/**
 * True when the system has something to read, possibly an end, that it does not return yet: the wait under
 * way gets it first. Always false on Linux, where a read returns what there is.
 */
bool IsReadOnItsWay(boost::asio::ip::tcp::socket& socket);

/**
 * Waits for the next connection to a listener. On Linux the handler is called before the connection is
 * accepted: Boost.Asio's own accepting allocates memory first, and drops the handler when there is none. On
 * Windows, which can't wait for a listener, it is called afterwards.
 * @param next  a closed socket, which TakeConnection fills; outlives the wait, as the listener does
 */
void WhenConnecting(boost::asio::ip::tcp::acceptor& acceptor, boost::asio::ip::tcp::socket& next,
                    std::function<void(const boost::system::error_code&)> handler);

/** Called in that handler: puts the connection into next. A code says why there is none. */
void TakeConnection(boost::asio::ip::tcp::acceptor& acceptor, boost::asio::ip::tcp::socket& next,
                    boost::system::error_code& code);

/**
 * Allows a listener to take a port whose earlier connections are still closing, but never one that is in use.
 */
void SetListenerReuse(boost::asio::ip::tcp::acceptor& acceptor, boost::system::error_code& code);

}  // namespace comm
