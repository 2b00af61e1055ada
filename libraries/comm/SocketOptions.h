#pragma once

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

/** Lets a listener take a port whose earlier connections are still closing, but never one that is in use. */
void SetListenerReuse(boost::asio::ip::tcp::acceptor& acceptor, boost::system::error_code& code);

}  // namespace comm
