#include "platform/PortProbe.h"

#include <cstdint>

#include <winsock2.h>
// After winsock2.h, which it needs.
#include <ws2tcpip.h>

namespace {

/** The socket library, ready for the life of the object. */
class CSocketLibrary {
  public:
    CSocketLibrary() : m_isReady(WSAStartup(MAKEWORD(2, 2), &m_data) == 0) {}
    ~CSocketLibrary() {
        if (m_isReady) {
            WSACleanup();
        }
    }
    CSocketLibrary(const CSocketLibrary&) = delete;
    CSocketLibrary& operator=(const CSocketLibrary&) = delete;

  private:
    WSADATA m_data{};
    bool m_isReady;
};

}  // namespace

EnPortState ProbePort(int port) {
    if (port < 1 || port > 65535) {
        return EnPortState::Taken;
    }
    const CSocketLibrary library;
    const SOCKET listener = socket(AF_INET, SOCK_STREAM, 0);
    if (listener == INVALID_SOCKET) {
        return EnPortState::Taken;
    }
    // As the server's own listener: without the option, a port that another program shares counts as free.
    const BOOL on = TRUE;
    setsockopt(listener, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&on), sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_ANY);
    const bool isFree = bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                        listen(listener, 1) == 0;
    closesocket(listener);
    // WSAEACCES is no sign of a reserved port: one that another program has exclusively gives it too.
    return isFree ? EnPortState::Free : EnPortState::Taken;
}
