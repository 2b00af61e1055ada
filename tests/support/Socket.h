#pragma once

#include "support/Wait.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace support {

/**
 * One socket on the loopback interface. Calls wait for at most the bound that they are given, throw TimedOut
 * beyond it, and std::system_error when the system refuses. One thread at a time, except that Shutdown may
 * come from any.
 */
class Socket {
  public:
    Socket() = default;
    Socket(Socket&& other) noexcept;
    Socket& operator=(Socket&& other) noexcept;
    ~Socket() { Close(); }

    /** A TCP connection to 127.0.0.1, made from the given local address. */
    static Socket Connect(int port, const std::string& from = "127.0.0.1", milliseconds limit = kMaxTestWait);

    /** Begins a TCP connection and does not wait for it. */
    static Socket BeginConnect(int port, const std::string& from = "127.0.0.1");

    /** A listener on 127.0.0.1; port 0 takes any. */
    static Socket Listen(int port = 0, int backlog = 128);

    /** A UDP socket bound on 127.0.0.1; port 0 takes any. */
    static Socket Udp(int port = 0);

    /** The next connection of a listener. */
    Socket Accept(milliseconds limit = kMaxTestWait);

    /** Sends all bytes. */
    void Send(std::string_view bytes, milliseconds limit = kMaxTestWait);

    /** The next bytes, 64 KiB at most; empty at the end of the stream. A reset counts as an end. */
    std::string Receive(milliseconds limit = kMaxTestWait);

    /** Waits until there is something to receive or to accept. @return false at the bound. */
    bool WaitReadable(milliseconds limit) const;

    /** Waits until a connection that was begun is there. @return false at the bound. */
    bool WaitConnected(milliseconds limit) const;

    /** Ends the sending half, so that the other side reads the end. */
    void ShutdownSend();

    /** Closes; the other side gets a reset instead of an end. */
    void Reset();

    void Close();
    bool IsOpen() const { return m_handle >= 0; }
    int LocalPort() const;

    /** The system's descriptor of the socket, for an event loop of one's own. */
    int Handle() const { return static_cast<int>(m_handle); }

  private:
    friend int FreePort();
    explicit Socket(std::intptr_t handle) : m_handle(handle) {}

    std::intptr_t m_handle = -1;
};

/** A port on which nothing listens, outside the range from which the system picks ports by itself. */
int FreePort();

}  // namespace support
