// The part of a channel that its users see.
#include "libraries/http/src/WebSocketConnection.h"

struct sockaddr* hio_peeraddr(hio_t* io) {
    return io == nullptr ? nullptr : &io->peer.sa;
}

namespace hv {

int WebSocketChannel::send(const std::string& /*message*/, ws_opcode /*opcode*/, bool /*fin*/) {
    return -1;
}

}  // namespace hv
