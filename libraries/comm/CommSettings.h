#pragma once

#include <chrono>
#include <cstddef>

namespace comm {

/** The clock of all waits in the library; never the wall clock. */
using Clock = std::chrono::steady_clock;

/** Limits of the library; the process's one object uses the defaults. */
struct SCommSettings {
    std::chrono::milliseconds bound{3000};       ///< of a connect or of a whole network send
    std::chrono::milliseconds retryPause{1000};  ///< after a failed connect, sends return its code at once
    std::chrono::milliseconds joinPause{250};    ///< how long a send waits for another's attempt or look-up
    std::chrono::milliseconds stallPause{
        1000};  ///< how long it waits for another's write that makes no progress
    std::chrono::milliseconds probePause{1000};  ///< until a silent device is tried again; doubled each time
    std::chrono::milliseconds longestProbePause{4000};  ///< the longest such pause
    std::chrono::hours probeAge{1};  ///< without a send for this long, a device is no longer tried
    int maxProbes = 256;             ///< silent devices that are tried at the same time
    std::chrono::milliseconds serialBound{10000};  ///< of a whole serial send
    std::chrono::milliseconds serialMargin{500};  ///< in addition to the time that the bytes need on the line
    std::chrono::milliseconds checkBound{150};    ///< wait of a check for a busy serial line
    std::chrono::milliseconds closeBound{50};     ///< wait of DeleteAll for serial devices to be closed
    std::chrono::milliseconds acceptPause{100};   ///< before accepting again after descriptors ran out
    std::chrono::milliseconds resolvedAge{10000};  ///< how long the addresses of a host name are reused
    std::chrono::milliseconds resolvePause{3000};  ///< how long a failed look-up is not repeated
    std::size_t maxNames = 1024;                   ///< host names that are remembered
    std::size_t maxPeers = 256;                    ///< clients of one TCP server; more are closed at once
};

}  // namespace comm
