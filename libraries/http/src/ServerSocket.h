#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

namespace hv::internal {

using Socket = boost::asio::basic_stream_socket<boost::asio::ip::tcp, boost::asio::io_context::executor_type>;
using Acceptor =
    boost::asio::basic_socket_acceptor<boost::asio::ip::tcp, boost::asio::io_context::executor_type>;

/** Sets the options of a listener before it is bound, so that a restart finds the port free. */
void SetListenerOptions(Acceptor& listener);

/**
 * Sets a connection to non-blocking, sends small segments at once, and notices a client without power within
 * two minutes.
 */
void SetConnectionOptions(Socket& socket);

/**
 * Closes the socket and ends outstanding operations: their handlers are called at once, whether or not the
 * client reads.
 */
void CloseNow(Socket& socket);

}  // namespace hv::internal
