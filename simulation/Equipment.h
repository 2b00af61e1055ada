#pragma once

#include "simulation/Socket.h"

#include <atomic>
#include <list>
#include <mutex>
#include <thread>

namespace simulation {

/** What a TCP device does with its connections. */
enum class EnDeviceMode {
    Record,  ///< reads and keeps the bytes
    Deaf,    ///< never reads
    Hangup,  ///< closes
    Reset,   ///< resets
};

/** Bytes that a device has received; any thread. */
class Recorder {
  public:
    void Add(std::string_view bytes);
    std::string Bytes() const;

    /** Waits until the device has at least this many bytes. @return all that it has then */
    std::string WaitBytes(std::size_t count) const;

  private:
    mutable std::mutex m_mutex;
    std::string m_bytes;
};

/** A piece of equipment that listens on a TCP port of the loopback interface, on a thread of its own. */
class TcpListener {
  public:
    explicit TcpListener(EnDeviceMode mode = EnDeviceMode::Record);
    ~TcpListener();
    TcpListener(const TcpListener&) = delete;
    TcpListener& operator=(const TcpListener&) = delete;

    int Port() const { return m_port; }
    const Recorder& Received() const { return m_received; }

    /** Number of connections that it has accepted so far. */
    int Accepted() const { return m_accepted; }

    /** Closes or resets the connections that are open now. */
    void DropConnections(bool reset = false);

  private:
    void Run(const std::stop_token& stop);
    void ReadAll();

    const EnDeviceMode m_mode;
    Socket m_listener;
    int m_port;
    std::atomic<int> m_accepted = 0;
    std::mutex m_mutex;
    std::list<Socket> m_connections;
    Recorder m_received;
    std::jthread m_thread;
};

/** A piece of equipment that receives datagrams. */
class UdpListener {
  public:
    UdpListener();

    int Port() const { return m_port; }
    const Recorder& Received() const { return m_received; }

  private:
    Socket m_socket;
    int m_port;
    Recorder m_received;
    std::jthread m_thread;
};

/** A device that does not answer: a connection attempt to its port hangs until its time limit. */
class SilentDevice {
  public:
    SilentDevice();
    int Port() const { return m_listener.LocalPort(); }

    /** Lets it answer from now on. */
    void Wake();

    /** Whether a connection comes within this time, once it answers. */
    bool IsTried(milliseconds limit) const { return m_listener.WaitReadable(limit); }
    Socket Accept() { return m_listener.Accept(); }

  private:
    Socket m_listener;
    std::list<Socket> m_fillers;
};

}  // namespace simulation
