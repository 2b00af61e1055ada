#include "platform/PortProbe.h"

#include <cstdint>
#include <utility>
#include <vector>

#include <winsock2.h>
// After winsock2.h, which they need.
#include <iphlpapi.h>
#include <ws2tcpip.h>

namespace {

// Another server that is started at the same time may have the port for its own look at it.
constexpr int kLooks = 2;
constexpr DWORD kBetweenLooks = 20;  // ms

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

/**
 * The system's listeners of one address family, as 32-bit words of its table; empty when the system doesn't
 * report them.
 */
std::vector<std::uint32_t> ReadListeners(ULONG family) {
    std::vector<std::uint32_t> room(1024);
    for (int attempt = 0; attempt < 5; ++attempt) {  // the table may grow between two calls
        auto size = static_cast<DWORD>(room.size() * sizeof room.front());
        const DWORD result =
            GetExtendedTcpTable(room.data(), &size, FALSE, family, TCP_TABLE_OWNER_PID_LISTENER, 0);
        if (result == NO_ERROR) {
            return room;
        }
        if (result != ERROR_INSUFFICIENT_BUFFER) {
            break;
        }
        room.resize(size / sizeof room.front() + 1024);
    }
    return {};
}

/** Whether a table with rows of this form has the port as one of this process; nothing where its owner is
 * unknown. */
template <typename Table>
std::optional<bool> HasOwnPort(const std::vector<std::uint32_t>& listeners, int port) {
    const auto& table = *reinterpret_cast<const Table*>(listeners.data());
    std::optional<bool> isOwn = false;
    for (DWORD row = 0; row < table.dwNumEntries; ++row) {
        const auto& [owner, number] = std::pair(table.table[row].dwOwningPid, table.table[row].dwLocalPort);
        if (ntohs(static_cast<u_short>(number)) == port && owner == GetCurrentProcessId()) {
            return true;
        }
        if (ntohs(static_cast<u_short>(number)) == port && owner == 0) {
            isOwn.reset();
        }
    }
    return isOwn;
}

/** Takes the port for a moment. */
bool CanTake(int port) {
    const SOCKET listener = socket(AF_INET, SOCK_STREAM, 0);
    if (listener == INVALID_SOCKET) {
        return false;
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
    return isFree;
}

}  // namespace

EnPortState ProbePort(int port) {
    if (port < 1 || port > 65535) {
        return EnPortState::Taken;
    }
    const CSocketLibrary library;
    for (int look = 0; look < kLooks; ++look) {
        if (CanTake(port)) {
            return EnPortState::Free;
        }
        Sleep(kBetweenLooks);
    }
    // WSAEACCES is no sign of a reserved port: one that another program has exclusively gives it too.
    return EnPortState::Taken;
}

std::optional<bool> IsListeningHere(int port) {
    const std::vector<std::uint32_t> listeners = ReadListeners(AF_INET);
    const std::vector<std::uint32_t> listeners6 = ReadListeners(AF_INET6);
    if (listeners.empty() || listeners6.empty()) {
        return std::nullopt;
    }
    const std::optional<bool> isOwn = HasOwnPort<MIB_TCPTABLE_OWNER_PID>(listeners, port);
    return isOwn == false ? HasOwnPort<MIB_TCP6TABLE_OWNER_PID>(listeners6, port) : isOwn;
}
