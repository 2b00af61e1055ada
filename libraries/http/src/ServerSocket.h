#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

namespace hv::internal {

using Socket = boost::asio::basic_stream_socket<boost::asio::ip::tcp, boost::asio::io_context::executor_type>;
using Acceptor =
    boost::asio::basic_socket_acceptor<boost::asio::ip::tcp, boost::asio::io_context::executor_type>;

/** Options of a listener before it is bound: what the system needs so that a restart finds the port free. */
void SetListenerOptions(Acceptor& listener);

/** Non-blocking, small segments at once, and a client without power is noticed within two minutes. */
void SetConnectionOptions(Socket& socket);

/** Closes, and ends what is outstanding: its handlers come at once, whether the client reads or not. */
void CloseNow(Socket& socket);

}  // namespace hv::internal
