#pragma once

#include <chrono>
#include <cstddef>

namespace comm {

/** All waits of the library: never the wall clock. */
using Clock = std::chrono::steady_clock;

/** Bounds of the library; the process's one object uses the defaults. */
struct SCommSettings {
    std::chrono::milliseconds bound{3000};         ///< of a connect or of a whole network send
    std::chrono::milliseconds retryPause{1000};    ///< after a failed connect, sends return its code at once
    std::chrono::milliseconds serialBound{10000};  ///< of a whole serial send
    std::chrono::milliseconds serialMargin{500};   ///< on top of the time that the bytes need on the line
    std::chrono::milliseconds checkBound{150};     ///< wait of a check for a busy serial line
    std::chrono::milliseconds closeBound{50};      ///< wait of DeleteAll for serial devices to be closed
    std::chrono::milliseconds acceptPause{100};    ///< before accepting again when descriptors ran out
    std::chrono::seconds resolvedAge{10};          ///< how long the addresses of a host name are reused
    std::size_t maxPeers = 256;                    ///< clients of one TCP server; more are closed at once
};

}  // namespace comm
