#pragma once

#include "simulation/Wait.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace simulation {

/** How to start a child process. */
struct ProcessOptions {
    std::vector<std::string> command;      ///< program and arguments
    std::vector<std::string> environment;  ///< "NAME=value" or "-uNAME" (removed), in addition to our own
    std::filesystem::path outputFolder;    ///< takes the files stdout.txt and stderr.txt
    std::optional<std::size_t> descriptorLimit;  ///< maximum of open descriptors
};

/** HangUp: the terminal is closed; on Windows the user logs off. */
enum class EnSignal { Terminate, HangUp, Kill };

/** A process that runs beside the test and never outlives it. Started, used and ended by one thread. */
class ChildProcess {
  public:
    /** Starts the process. @throw std::system_error when that fails */
    explicit ChildProcess(const ProcessOptions& options);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    void Send(EnSignal signal) const;

    /** The exit status, 128 + N after signal N; nothing when it still runs at the bound. */
    std::optional<int> WaitExit(milliseconds limit = kMaxTestWait);

    bool Running() { return !WaitExit(milliseconds(0)); }

    /** Its output so far. */
    std::string Output() const;
    std::string ErrorOutput() const;

    /** Memory in use, in bytes. */
    std::size_t ResidentBytes() const;

    /** Number of open descriptors. */
    std::size_t Descriptors() const;

    /** Processor time so far, of this process and of its children, in seconds. */
    double ProcessorSeconds() const;

  private:
    std::filesystem::path m_outputFolder;
    int m_id = -1;
    struct SSystem;
    std::shared_ptr<SSystem> m_system;  ///< other data that the system needs; null on Linux
    std::optional<int> m_status;
};

}  // namespace simulation
