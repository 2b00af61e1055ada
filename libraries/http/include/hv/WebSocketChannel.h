#pragma once

#include <memory>
#include <string>

#include <hv/hloop.h>

/** Opcodes of WebSocket frames (RFC 6455, 5.2). */
enum ws_opcode {
    WS_OPCODE_CONTINUE = 0x0,
    WS_OPCODE_TEXT = 0x1,
    WS_OPCODE_BINARY = 0x2,
    WS_OPCODE_CLOSE = 0x8,
    WS_OPCODE_PING = 0x9,
    WS_OPCODE_PONG = 0xA,
};

namespace hv {

/** One WebSocket connection. Any thread may send. */
class WebSocketChannel {
  public:
    /** A channel on an io handle; with null, a channel without a connection. */
    explicit WebSocketChannel(hio_t* io = nullptr) : m_io(io) {}
    virtual ~WebSocketChannel() = default;

    WebSocketChannel(const WebSocketChannel&) = delete;
    WebSocketChannel& operator=(const WebSocketChannel&) = delete;

    /**
     * Queues a message. A client that does not read is disconnected when its queue exceeds the limit.
     * @return number of bytes queued, or a negative value when the connection is closed
     */
    virtual int send(const std::string& message, enum ws_opcode opcode = WS_OPCODE_TEXT, bool fin = true);

    /** The io handle; null when there is no connection. Valid as long as the channel is. */
    hio_t* io() { return m_io; }

  private:
    hio_t* m_io;
};

}  // namespace hv

using WebSocketChannelPtr = std::shared_ptr<hv::WebSocketChannel>;
