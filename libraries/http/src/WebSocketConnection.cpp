#include "libraries/http/src/WebSocketConnection.h"

#include "libraries/http/src/ErrorReport.h"
#include "libraries/http/src/Handshake.h"

#include <array>
#include <cstring>
#include <exception>
#include <new>

#include <boost/asio/post.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/message.hpp>

namespace hv::internal {

namespace asio = boost::asio;
namespace http = boost::beast::http;
namespace websocket = boost::beast::websocket;
using boost::system::error_code;

namespace {

constexpr std::size_t kKeptCapacity = 4096;

// Close frames with the codes 1001, going away, and 1002, protocol error (RFC 6455, 7.4.1).
constexpr std::array<unsigned char, 4> kGoingAway = {0x88, 0x02, 0x03, 0xE9};
constexpr std::array<unsigned char, 4> kProtocolError = {0x88, 0x02, 0x03, 0xEA};
constexpr unsigned kHighestCloseCode = 4999;

http::request<http::empty_body> UpgradeOf(const HttpRequest& request) {
    http::request<http::empty_body> upgrade(http::verb::get, request.path, 11);
    for (const auto& [name, value] : request.headers) {
        upgrade.insert(name, value);
    }
    return upgrade;
}

}  // namespace

Channel::Channel(WebSocketConnection& connection, const asio::ip::tcp::endpoint& peer)
    : WebSocketChannel(&m_handle), m_connection(&connection) {
    std::memcpy(&m_handle.peer, peer.data(), std::min(peer.size(), sizeof m_handle.peer));
}

int Channel::send(const std::string& message, ws_opcode opcode, bool fin) {
    const CLock lock(m_mutex);
    if (m_connection == nullptr) {
        return -1;
    }
    // Released before the lock, or passed to the loop: the last reference must not be destroyed on this
    // thread.
    auto connection = m_connection->weak_from_this().lock();
    if (!connection) {
        return -1;
    }
    const auto executor = connection->m_stream.get_executor();
    if (m_queuedBytes + message.size() > connection->m_server.Bounds().webSocketQueueBytes) {
        asio::post(executor, [connection = std::move(connection)] { connection->Close(); });
        return -1;
    }
    m_queue.push_back({message, opcode, fin});
    try {
        if (m_queue.size() == 1) {
            asio::post(executor, [connection = std::move(connection)] { connection->WriteNext(); });
        }
    } catch (const std::bad_alloc&) {
        m_queue.pop_back();  // or all later ones would wait behind it
        return -1;
    }
    m_queuedBytes += message.size();
    return static_cast<int>(message.size());
}

void Channel::Detach() {
    const CLock lock(m_mutex);
    m_connection = nullptr;
    m_queue.clear();
}

WebSocketConnection::WebSocketConnection(ServerLoop& loop, Socket socket, const asio::ip::tcp::endpoint& peer,
                                         std::shared_ptr<HttpRequest> request)
    : ServerConnection(loop),
      m_address(peer.address()),
      m_stream(std::move(socket)),
      m_request(std::move(request)),
      m_channel(std::make_shared<Channel>(*this, peer)),
      m_buffer(m_text) {
    const Limits& limits = m_server.Bounds();
    m_stream.next_layer().deadline = &m_deadline;
    m_stream.next_layer().stall = limits.writeStall;
    m_stream.next_layer().wait = limits.webSocketClose;
    m_stream.read_message_max(limits.webSocketMessageBytes);
    m_stream.auto_fragment(false);
    m_stream.control_callback([this](websocket::frame_type kind, boost::beast::string_view) {
        m_lastUse = Clock::now();
        if (kind == websocket::frame_type::close && m_stream.reason().code > kHighestCloseCode) {
            // The stream takes such a code and would send it back.
            SendLast(kProtocolError);
        }
    });
    m_stream.set_option(websocket::stream_base::decorator([this](websocket::response_type& response) {
        response.set(http::field::server, "WebSocket");
        if (const std::string_view protocol = ChosenSubprotocol(*m_request); !protocol.empty()) {
            response.set(http::field::sec_websocket_protocol, protocol);
        }
    }));
}

WebSocketConnection::~WebSocketConnection() {
    m_channel->Detach();
}

void WebSocketConnection::Start() {
    Call(Callback::Open);
}

void WebSocketConnection::Accept() {
    m_stream.async_accept(UpgradeOf(*m_request), [self = shared_from_this()](const error_code& error) {
        self->m_request.reset();
        if (error || self->m_isClosed) {
            self->Close();
            self->Call(Callback::Close);
            return;
        }
        self->m_isOpen = true;
        self->WriteNext();
        self->Read();
    });
}

// The end of the present or next operation, the acceptance or a read, leads to the last callback.
void WebSocketConnection::Close() {
    if (std::exchange(m_isClosed, true)) {
        return;
    }
    m_deadline = Clock::time_point::max();
    m_channel->Detach();
    CloseNow(m_stream.next_layer());
}

bool WebSocketConnection::IsExpendable() const {
    return m_isOpen && !m_isClosed && LastUse() + m_server.Bounds().webSocketSilence <= Clock::now();
}

void WebSocketConnection::Stop() {
    if (!m_isClosed) {
        SendLast(kGoingAway);
    }
    Close();
}

// Sends a last frame without the stream, unless it would end up inside another frame.
void WebSocketConnection::SendLast(const std::array<unsigned char, 4>& frame) {
    error_code ignored;
    if (!m_isWriting && m_isOpen) {
        m_stream.next_layer().write_some(asio::buffer(frame), ignored);
    }
    m_stream.next_layer().shutdown(asio::socket_base::shutdown_send, ignored);
}

void WebSocketConnection::Call(Callback callback) {
    m_callback = callback;
    m_loop.Threads().Execute(shared_from_this());
}

void WebSocketConnection::Run() noexcept {
    const WebSocketService& service = *m_server.WebSockets();
    try {
        switch (m_callback) {
            case Callback::Open:
                if (service.onopen) {
                    service.onopen(m_channel, m_request);
                }
                break;
            case Callback::Message:
                if (service.onmessage) {
                    service.onmessage(m_channel, m_text);
                }
                break;
            case Callback::Close:
                if (service.onclose) {
                    service.onclose(m_channel);
                }
                break;
        }
    } catch (const std::exception& error) {
        ReportError("A WebSocket callback failed: ", error.what());
    } catch (...) {
        ReportError("A WebSocket callback failed: unknown exception");
    }
}

void WebSocketConnection::Done() {
    if (m_callback == Callback::Close) {
        Leave();
        return;
    }
    if (m_callback == Callback::Open) {
        Accept();
        return;
    }
    m_buffer.consume(m_buffer.size());
    if (m_text.capacity() > kKeptCapacity) {
        std::string().swap(m_text);
    }
    Read();
}

void WebSocketConnection::Read() {
    m_stream.async_read(m_buffer, [self = shared_from_this()](const error_code& error, std::size_t) {
        if (error) {
            self->Close();
        }
        self->m_lastUse = Clock::now();
        self->Call(error ? Callback::Close : Callback::Message);
    });
}

void WebSocketConnection::WriteNext() {
    {
        const CLock lock(m_channel->m_mutex);
        if (!m_isOpen || m_isClosed || m_isWriting || m_channel->m_queue.empty()) {
            return;
        }
        m_writing = std::move(m_channel->m_queue.front());
    }
    m_isWriting = true;
    const auto written = [self = shared_from_this()](const error_code& error, std::size_t = 0) {
        self->OnWritten(error);
    };
    switch (m_writing.opcode) {
        case WS_OPCODE_CLOSE:
            m_stream.async_close(websocket::close_code::normal, written);
            break;
        case WS_OPCODE_PING:
            m_stream.async_ping(websocket::ping_data(m_writing.payload.substr(0, 125)), written);
            break;
        case WS_OPCODE_PONG:
            m_stream.async_pong(websocket::ping_data(m_writing.payload.substr(0, 125)), written);
            break;
        default:
            m_stream.binary(m_writing.opcode == WS_OPCODE_BINARY);
            m_stream.async_write_some(m_writing.fin, asio::buffer(m_writing.payload), written);
            break;
    }
}

void WebSocketConnection::OnWritten(const error_code& error) {
    m_isWriting = false;
    if (m_isClosed) {
        return;
    }
    if (error) {
        Close();
        return;
    }
    {
        const CLock lock(m_channel->m_mutex);
        m_channel->m_queuedBytes -= m_writing.payload.size();
        m_channel->m_queue.pop_front();
    }
    WriteNext();
}

}  // namespace hv::internal
