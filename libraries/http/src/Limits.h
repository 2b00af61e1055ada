#pragma once

#include "libraries/http/src/MemoryShare.h"

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace hv::internal {

/** Limits that protect a server from its clients. All of them are here. */
struct Limits {
    using Time = std::chrono::milliseconds;

    std::size_t headerBytes = std::size_t{16} * 1024;        ///< request line and headers together: 431
    std::uint64_t bodyBytes = std::uint64_t{256} << 20;      ///< request body, whatever its rule: 413
    std::uint64_t plainBodyBytes = std::uint64_t{1} << 20;   ///< request body without a rule: 413
    std::size_t largeBodyBytes = std::size_t{64} * 1024;     ///< larger bodies count in the budget
    std::uint64_t memoryBudget = DefaultMemoryBudget();      ///< of all large bodies: 503
    std::size_t chunkOverheadBytes = std::size_t{8} * 1024;  ///< chunk lines' extensions, trailer: 400
    Time headerWait{15'000};                                 ///< first byte to end of header, absolute
    Time bodyStall{30'000};                                  ///< without a byte of the body
    Time writeStall{30'000};                                 ///< without a byte of the reply taken
    Time transferWait{300'000};                              ///< for a whole body or reply, and ...
    std::uint64_t transferRate = 256;                        ///< ... 1 s more for each so many bytes of it
    Time writeWait{3'000};       ///< of a POST for a place to run its handler: 503
    Time keepAlive{75'000};      ///< between two requests
    Time linger{2'000};          ///< for the client to read a last reply
    Time webSocketClose{5'000};  ///< for the other half of a close
    std::size_t webSocketMessageBytes = std::size_t{64} * 1024;  ///< received message: close code 1009
    std::size_t webSocketQueueBytes = std::size_t{1} << 20;      ///< unsent bytes of one connection: closed
    std::size_t webSocketsOfAddress = 64;  ///< of one address; above, silent ones are closed: see ServerLoop
    Time webSocketSilence{180'000};        ///< without a message; a page sends one each minute at least
    std::size_t fileChunkBytes = std::size_t{64} * 1024;  ///< files are read in pieces of this size
    Time sweep{250};                                      ///< how often expired connections are looked for
    Time refusedPages{60'000};                            ///< between two lines in the log about them
    Time acceptPause{100};                                ///< after descriptors ran out
    Time stopGrace{2'000};                                ///< for handlers that run at a stop
};

/** Limits for servers that are started from now on. Tests lower them; do not change them during a start. */
Limits& LimitsOfNewServers();

}  // namespace hv::internal
