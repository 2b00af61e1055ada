#pragma once

#include "platform/Histogram.h"
#include "platform/PortRecords.h"

#include <chrono>
#include <cstddef>
#include <cstdint>

/** What a port of the library is doing. */
enum class EnPortState : std::uint8_t {
    Closed,      ///< not used yet, or ended in an orderly way; the next command opens it
    Connecting,  ///< a TCP client waits for the device
    Open,        ///< connected, bound, or the serial device is open
    Listening,   ///< a TCP server; connected devices are counted in SPortReport::peers
    Failed,      ///< the last try to open it failed, or its connection broke
};

/**
 * What a port of the library has done since it was first used, or since DeleteUserTcp or DeleteAllConnect.
 * Times are of the system's clock; the epoch stands for "never".
 */
struct SPortReport {
    using Time = std::chrono::system_clock::time_point;

    std::uint64_t port = 0;  ///< number of the port, unique in the process; 0: not used yet
    EnPortState state = EnPortState::Closed;
    Time since;                        ///< begin of the state
    int lastError = 0;                 ///< error number of the last failure, which may be long over; 0: none
    Time lastErrorAt;                  ///< time of that failure
    std::uint64_t bytesOut = 0;        ///< of commands that the system has taken whole
    std::uint64_t bytesIn = 0;         ///< received from devices
    std::uint64_t commandsOut = 0;     ///< commands that the system has taken whole
    std::uint64_t commandsFailed = 0;  ///< commands that could not be sent
    STimes sendTimes;                  ///< of all commands, from the call to its result
    Time lastOut;                      ///< time of the last command that was sent
    Time lastIn;                       ///< time at which bytes came last
    int calls = 0;                     ///< calls that use the port now: commands that are sent or wait
    std::size_t peers = 0;             ///< of a TCP server: connected devices that the record names
};

/**
 * What the port of a record has done; an empty report when the record has not been used yet. Records that
 * share a port (see CComManager) share its counters. Opens nothing and waits for no device. Any thread.
 */
SPortReport ReportOfPort(const SNetPortConfig& record);

/** As above, for a serial line. */
SPortReport ReportOfPort(const SSerialPortConfig& record);
