#include "platform/PortProbe.h"

#include "platform/FolderNames.h"

#include <cerrno>
#include <charconv>
#include <cstdint>
#include <string>
#include <vector>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

/** Of a socket over IPv4 or IPv6; 0 of anything else. */
int LocalPort(int descriptor) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    if (getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        return 0;
    }
    switch (address.ss_family) {
        case AF_INET:
            return ntohs(reinterpret_cast<const sockaddr_in&>(address).sin_port);
        case AF_INET6:
            return ntohs(reinterpret_cast<const sockaddr_in6&>(address).sin6_port);
        default:
            return 0;
    }
}

bool IsListener(int descriptor) {
    int listens = 0;
    socklen_t size = sizeof listens;
    return getsockopt(descriptor, SOL_SOCKET, SO_ACCEPTCONN, &listens, &size) == 0 && listens != 0;
}

}  // namespace

EnPortState ProbePort(int port) {
    if (port < 1 || port > 65535) {
        return EnPortState::Taken;
    }
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (listener < 0) {
        return EnPortState::Taken;
    }
    // As the server's own listener: connections of an earlier run that linger don't count.
    const int on = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_ANY);
    // A listener lets nobody else bind; to listen here would show others a listener for a moment, such as a
    // server that is started at the same time.
    const bool isFree = bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    const bool isWithheld = errno == EACCES || errno == EPERM;
    close(listener);
    if (isFree) {
        return EnPortState::Free;
    }
    return isWithheld ? EnPortState::Withheld : EnPortState::Taken;
}

// A descriptor that another thread closes meanwhile is no listener any more, or a new one.
std::optional<bool> IsListeningHere(int port) {
    const std::vector<std::string> names = NamesInFolder("/proc/self/fd");
    for (const std::string& name : names) {
        int descriptor = -1;
        std::from_chars(name.data(), name.data() + name.size(), descriptor);
        if (LocalPort(descriptor) == port && IsListener(descriptor)) {
            return true;
        }
    }
    return names.empty() ? std::nullopt : std::optional(false);
}
