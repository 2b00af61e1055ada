#include "platform/PortProbe.h"

#include <cerrno>
#include <cstdint>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

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
    const bool isFree = bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                        listen(listener, 1) == 0;
    const bool isWithheld = errno == EACCES || errno == EPERM;
    close(listener);
    if (isFree) {
        return EnPortState::Free;
    }
    return isWithheld ? EnPortState::Withheld : EnPortState::Taken;
}
