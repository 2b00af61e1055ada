#pragma once

#include "libraries/http/src/Server.h"
#include "platform/Mutex.h"

#include <array>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include <boost/asio/buffer.hpp>
#include <boost/asio/compose.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <boost/beast/websocket/teardown.hpp>
#include <hv/WebSocketServer.h>
#include <hv/hsocket.h>

/** The data of a connection's io handle. */
struct hio_t {
    sockaddr_u peer{};
};

namespace hv::internal {

/**
 * The socket below a WebSocket stream: limits how long the stream waits for a client that takes nothing, even
 * where the stream writes by itself (a pong, for example), and how long it waits for the client's end.
 */
class WebSocketLayer final : public Socket {
  public:
    explicit WebSocketLayer(Socket socket) : Socket(std::move(socket)) {}

    template <class Buffers, class Handler>
    auto async_write_some(const Buffers& buffers, Handler&& handler) {
        using boost::system::error_code;
        return boost::asio::async_compose<Handler, void(error_code, std::size_t)>(
            [this, buffers, begun = false](auto& self, const error_code& error = {},
                                           std::size_t sent = 0) mutable {
                if (!std::exchange(begun, true)) {
                    *deadline = Clock::now() + stall;
                    Socket::async_write_some(buffers, std::move(self));
                    return;
                }
                *deadline = Clock::time_point::max();
                self.complete(error, sent);
            },
            handler, get_executor());
    }

    Clock::time_point* deadline = nullptr;  ///< of the connection
    Clock::duration stall{};                ///< without a byte taken
    Clock::duration wait{};                 ///< for the client's end
};

template <class Handler>
void async_teardown(boost::beast::role_type role, WebSocketLayer& layer, Handler&& handler) {
    *layer.deadline = Clock::now() + layer.wait;
    boost::beast::websocket::async_teardown(role, static_cast<Socket&>(layer),
                                            std::forward<Handler>(handler));
}

class WebSocketConnection;

/** The part of a WebSocket connection that user code holds. It outlives the connection and the server. */
class Channel final : public WebSocketChannel {
  public:
    Channel(WebSocketConnection& connection, const boost::asio::ip::tcp::endpoint& peer);

    int send(const std::string& message, ws_opcode opcode, bool fin) override;

    /** From now on, accepts nothing for sending. */
    void Detach();

  private:
    friend class WebSocketConnection;

    struct Frame {
        std::string payload;
        ws_opcode opcode;
        bool fin;
    };

    hio_t m_handle;
    CMutex m_mutex;
    WebSocketConnection* m_connection GUARDED_BY(m_mutex);  // null when it has ended
    std::deque<Frame> m_queue GUARDED_BY(m_mutex);
    std::size_t m_queuedBytes GUARDED_BY(m_mutex) = 0;
};

/** A connection that was upgraded to WebSocket. Its callbacks run one after the other. */
class WebSocketConnection final : public ServerConnection,
                                  public BlockingTask,
                                  public std::enable_shared_from_this<WebSocketConnection> {
  public:
    WebSocketConnection(ServerLoop& loop, Socket socket, const boost::asio::ip::tcp::endpoint& peer,
                        std::shared_ptr<HttpRequest> request);
    ~WebSocketConnection() override;

    /**
     * Runs the callback of an opened connection, then accepts the upgrade and begins to serve. So a client
     * that has read the reply is known already. Messages that the callback sends follow the reply. The
     * request must be valid.
     */
    void Start();

    void Close() override;
    void Stop() override;
    bool IsExpendable() const override;  // when nothing has been heard for a while
    const boost::asio::ip::address* Holder() const override { return m_isClosed ? nullptr : &m_address; }

    void Run() noexcept override;
    void Done() override;

  private:
    friend class Channel;
    enum class Callback { Open, Message, Close };

    void Call(Callback callback);
    void Accept();
    void Read();
    void SendLast(const std::array<unsigned char, 4>& frame);
    void WriteNext();
    void OnWritten(const boost::system::error_code& error);

    const boost::asio::ip::address m_address;
    boost::beast::websocket::stream<WebSocketLayer, false> m_stream;
    std::shared_ptr<HttpRequest> m_request;
    std::shared_ptr<Channel> m_channel;
    std::string m_text;
    boost::asio::dynamic_string_buffer<char, std::char_traits<char>, std::allocator<char>> m_buffer;
    Callback m_callback = Callback::Open;
    Channel::Frame m_writing{};
    bool m_isWriting = false;
    bool m_isOpen = false;
    bool m_isClosed = false;
};

}  // namespace hv::internal
