#pragma once

#include "simulation/PtyPair.h"

#include <functional>
#include <list>
#include <string>
#include <thread>

namespace demo {

/** The answer of a device to one whole message of its protocol. */
using Answer = std::function<std::string(const std::string& message)>;

/** A text protocol of lines that end with a carriage return: the answers of a projector and of a matrix. */
std::string ProjectorAnswer(const std::string& line);
std::string MatrixAnswer(const std::string& line);

/** A protocol of four bytes: A0, channel, state, sum. A relay repeats what it has done. */
std::string RelayAnswer(const std::string& frame);

/** A device on a TCP port that prints and answers each line that it receives. Runs on a thread of its own. */
class TcpDevice {
  public:
    TcpDevice(std::string name, Answer answer);
    ~TcpDevice();
    TcpDevice(const TcpDevice&) = delete;
    TcpDevice& operator=(const TcpDevice&) = delete;

    int Port() const { return m_port; }

  private:
    struct Connection {
        simulation::Socket socket;
        std::string pending;  ///< the beginning of an incomplete line
    };

    void Run(const std::stop_token& stop);
    bool Read(Connection& connection) const;

    const std::string m_name;
    const Answer m_answer;
    simulation::Socket m_listener;
    int m_port;
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
