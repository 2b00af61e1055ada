#pragma once

#include "simulation/Wait.h"

#include <string>
#include <string_view>

namespace simulation {

/**
 * One socket on the loopback interface. Calls wait at most for kMaxTestWait and then throw TimedOut; they
 * throw std::system_error when the system refuses. One thread.
 */
class Socket {
  public:
    Socket() = default;
    Socket(Socket&& other) noexcept;
    Socket& operator=(Socket&& other) noexcept;
    ~Socket() { Close(); }

    /** A TCP connection to 127.0.0.1 from the given local address; begin: does not wait for it. */
    static Socket Connect(int port, const char* from = "127.0.0.1", bool begin = false);

    /** A listener on 127.0.0.1 or another address of this machine; port 0 takes any. */
    static Socket Listen(int port = 0, int backlog = 128, const char* address = "127.0.0.1");

    /** A UDP socket bound on 127.0.0.1 to any port. */
    static Socket Udp();

    Socket Accept();
    void Send(std::string_view bytes);

    /** The next bytes, at most 64 KiB; empty at the end of the stream. A reset counts as an end. */
    std::string Receive();

    /** Waits until there is something to receive or to accept. @return false at the time limit */
    bool WaitReadable(milliseconds limit) const;

    /** Waits until a connection that was begun is established. @return false at the time limit */
    bool WaitConnected(milliseconds limit) const;

    /** Ends the sending half, so that the other side reads the end. */
    void ShutdownSend();

    /** Closes so that the other side gets a reset instead of an end. */
    void Reset();

    void Close();
    bool IsOpen() const { return m_handle >= 0; }
    int LocalPort() const;

    /** The system's descriptor of the socket, for an event loop. */
    int Handle() const { return m_handle; }

  private:
    explicit Socket(int type, const char* address, int port);
    int m_handle = -1;
};

/** A port on which nothing listens, outside the range from which the system picks ports by itself. */
int FreePort();

}  // namespace simulation
