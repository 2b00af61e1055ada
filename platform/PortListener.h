#pragma once

#include "platform/PortReports.h"

#include <cstdint>
#include <string_view>

/** The other end of received bytes. */
struct SPortPeer {
    /** Unique in the process for a TCP connection, or for a sender of datagrams; 0 for a serial line. */
    std::uint64_t number = 0;
    std::string_view address;  ///< such as "10.0.0.5:4001" or "[fe80::1]:4001"; empty for a serial line
    bool isDatagram = false;   ///< the bytes are one datagram, not the next of a stream
};

/**
 * Hears what the ports of the library send and receive. Its functions are called on any thread, some of them
 * under a lock of the port, and on the way of a command. So they wait for nothing, call nothing of the port
 * library, and take only locks under which nothing else is locked. Texts and bytes are valid during the call
 * only. A port is named by its number (SPortReport::port), which is never given again.
 */
class CPortListener {
  public:
    CPortListener() = default;
    virtual ~CPortListener() = default;
    CPortListener(const CPortListener&) = delete;
    CPortListener& operator=(const CPortListener&) = delete;

    /**
     * A command was sent, or not: on the thread of the call that sends it.
     * @param bytes  all bytes of the command, even if only some were taken
     * @param error  0, or the error number that the call gives
     */
    virtual void OnSent(std::uint64_t port, std::string_view bytes, int error) noexcept = 0;

    /** A device sent bytes: at least one. What one peer sends comes in its order; a datagram comes whole. */
    virtual void OnReceived(std::uint64_t port, const SPortPeer& peer, std::string_view bytes) noexcept = 0;

    /** The port has got another state. */
    virtual void OnState(std::uint64_t port, EnPortState state) noexcept = 0;

    /** The port is gone: no further call names it. */
    virtual void OnEnded(std::uint64_t port) noexcept = 0;
};

/**
 * Lets a listener hear all ports from now on, instead of the former one, which may still get calls that are
 * under way. Any thread.
 * @param listener  lives as long as the process; null: nobody listens, which costs nothing
 */
void ListenToPorts(CPortListener* listener);

/**
 * Whether a device at this address (SPortPeer::address) is one that the record means. Records that share a
 * port tell their devices apart by the remote address; one that has none there, or a host name, means all.
 */
bool IsDeviceOf(const SNetPortConfig& record, std::string_view address);
