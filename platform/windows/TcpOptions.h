#pragma once

/** Options of TCP sockets (ws2ipdef.h of the Windows 10 SDK) that the compiler's headers lack. */
constexpr int kTcpKeepIdle = 3;  ///< seconds of silence before the first keep-alive probe
constexpr int kTcpMaxRetransmit =
    5;                             ///< seconds after which data that nobody acknowledges ends the connection
constexpr int kTcpKeepCount = 16;  ///< number of probes
constexpr int kTcpKeepInterval = 17;  ///< seconds between probes
