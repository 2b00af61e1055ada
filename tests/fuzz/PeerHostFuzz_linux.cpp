// Any text, and any address: the host of a peer is part of the text, and the address that was written.
#include "server/ClientsManager.h"
#include "tests/fuzz/FuzzTarget.h"

#include <array>
#include <cstring>

#include <hv/hsocket.h>

#include <arpa/inet.h>

namespace {

/** The address that the first bytes make, of the given family, written as the server writes it and alone. */
void CheckAddress(std::string_view bytes, sa_family_t family) {
    sockaddr_u address{};
    std::memcpy(&address, bytes.data(), std::min(bytes.size(), sizeof address.sin6));
    address.sa.sa_family = family;
    address.sin6.sin6_scope_id = family == AF_INET6 ? 0 : address.sin6.sin6_scope_id;  // the name of a card
    const void* number = &address.sin6.sin6_addr;
    if (family == AF_INET) {
        number = &address.sin.sin_addr;
    }
    std::array<char, 64> text{};
    std::array<char, 64> alone{};
    sockaddr_str(&address, text.data(), text.size());
    Require(inet_ntop(family, number, alone.data(), alone.size()) != nullptr);
    Require(ExtractPeerHost(text.data()) == alone.data());
}

}  // namespace

FUZZ_TARGET(peer_host) {
    const std::string text(bytes);
    Require(text.find(ExtractPeerHost(text)) != std::string::npos);
    CheckAddress(bytes, AF_INET);
    CheckAddress(bytes, AF_INET6);
}
