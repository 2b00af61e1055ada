#pragma once

#include "simulation/PtyPair.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <list>
#include <optional>
#include <string>
#include <thread>

namespace demo {

/** The answer of a device to one whole message of its protocol. */
using Answer = std::function<std::string(const std::string& message)>;

/**
 * A projector with a text protocol of lines that end with a carriage return. It is asked for its power, input
 * and lamp hours ("%1POWR ?"), and takes ten seconds to warm up and to cool down; meanwhile it refuses to be
 * switched. One thread.
 */
class Projector {
  public:
    std::string Answer(const std::string& line);

  private:
    using Clock = std::chrono::steady_clock;

    /** '0' off, '1' on, '2' cooling down, '3' warming up. */
    char Power() const;
    std::string SetPower(bool on);
    std::string SetInput(const std::string& input);

    bool m_isOn = false;
    Clock::time_point m_settled = Clock::now();  ///< until then it warms up or cools down
    std::string m_input = "31";
};

/** The answers of a matrix with such lines. */
std::string MatrixAnswer(const std::string& line);

/** A protocol of four bytes: A0, channel, state, sum. A relay repeats what it has done. */
std::string RelayAnswer(const std::string& frame);

/**
 * A device on a TCP port that answers each line that it receives, and prints it unless it is a question,
 * which may come every second. Runs on a thread of its own.
 */
class TcpDevice {
  public:
    TcpDevice(std::string name, Answer answer);
    ~TcpDevice();
    TcpDevice(const TcpDevice&) = delete;
    TcpDevice& operator=(const TcpDevice&) = delete;

    int Port() const { return m_port; }

    /** Pulls the plug, or puts it in again: without it nobody can connect. Any thread. */
    void SetPlugged(bool isPlugged) { m_isPlugged = isPlugged; }

  private:
    struct Connection {
        simulation::Socket socket;
        std::string pending;  ///< the beginning of an incomplete line
    };

    void Run(const std::stop_token& stop);
    void FollowPlug();
    bool Read(Connection& connection) const;

    const std::string m_name;
    const Answer m_answer;
    std::optional<simulation::Socket> m_listener;  ///< nothing while it is unplugged
    int m_port;
    std::atomic<bool> m_isPlugged = true;
    std::list<Connection> m_connections;
    std::jthread m_thread;
};

/** A device on a serial line that prints and answers each frame of four bytes that it receives. */
class SerialDevice {
  public:
    SerialDevice(std::string name, Answer answer, const std::filesystem::path& link);
    ~SerialDevice();
    SerialDevice(const SerialDevice&) = delete;
    SerialDevice& operator=(const SerialDevice&) = delete;

    const std::filesystem::path& Path() const { return m_line.Device(); }

  private:
    void Run(const std::stop_token& stop) const;

    const std::string m_name;
    const Answer m_answer;
    simulation::PtyPair m_line;
    std::jthread m_thread;
};

}  // namespace demo
