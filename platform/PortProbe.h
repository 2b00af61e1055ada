#pragma once

#include <optional>

/** What a program finds when it wants to listen on a TCP port. */
enum class EnPortState {
    Free,
    Taken,    ///< another program listens, or the number is outside 1 to 65535
    Withheld  ///< the program lacks the right (Linux, below 1024); Windows reports this as Taken
};

/** Tries to take this TCP port on all addresses of the machine, as a server does. Any thread. */
EnPortState ProbePort(int port);

/** True when a server can listen on the port. Any thread. */
inline bool IsPortFree(int port) {
    return ProbePort(port) == EnPortState::Free;
}

/**
 * Whether this process listens on the TCP port, on whatever address; nothing when the system doesn't report
 * it. Any thread.
 */
std::optional<bool> IsListeningHere(int port);
