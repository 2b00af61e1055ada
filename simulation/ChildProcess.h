#pragma once

#include "simulation/Wait.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace simulation {

/** What a child process is started with. */
struct ProcessOptions {
    std::vector<std::string> command;            ///< program and arguments
    std::vector<std::string> environment;        ///< "NAME=value" or "-uNAME" (removed), beside our own
    std::filesystem::path outputFolder;          ///< takes the files stdout.txt and stderr.txt
    std::optional<std::size_t> descriptorLimit;  ///< most descriptors that it may have open
};

/** HangUp: the terminal was closed; on Windows the user logs off. */
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

    /** What it has written so far. */
    std::string Output() const;
    std::string ErrorOutput() const;

    /** Memory in use, in bytes. */
    std::size_t ResidentBytes() const;

    /** Descriptors that are open. */
    std::size_t Descriptors() const;

    /** Processor time so far, of this process and of its children, in seconds. */
    double ProcessorSeconds() const;

  private:
    std::filesystem::path m_outputFolder;
    int m_id = -1;
    struct SSystem;
    std::shared_ptr<SSystem> m_system;  ///< what else the system needs; null on Linux
    std::optional<int> m_status;
};

}  // namespace simulation
