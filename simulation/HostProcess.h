#pragma once

#include "simulation/ChildProcess.h"
#include "simulation/TemporaryFolder.h"

#include <memory>

namespace simulation {

/** Options of a host process; the defaults suit most tests. */
struct HostOptions {
    std::vector<std::string> environment{};        ///< "NAME=value", in addition to HOME and the locale
    std::optional<std::size_t> descriptorLimit{};  ///< maximum of open descriptors
    std::filesystem::path userData{};              ///< the user data folder; empty: the default in the home
    std::vector<std::string> runner{};  ///< a program with its arguments that starts the host, or nothing
    bool ownInstallation = false;  ///< runs from a copy in the home, with empty folders dist and Resource
    int httpPort = 0;              ///< 0: a free one
    int webSocketPort = 0;         ///< 0: a free one
};

/**
 * The built host, in a home folder of its own, with ports of its own in LocalHost.config. The folder stays
 * when the process is stopped and started again. The build sets the program's path; the environment variable
 * SERVER_HOST overrides it. One thread.
 */
class HostProcess {
  public:
    /** Creates the home folder and the configuration; starts nothing. */
    explicit HostProcess(HostOptions options = {});

    /** Starts the process and waits until it answers. @throw std::runtime_error with its output */
    void Start();

    /** Starts the process and does not wait. */
    void Launch();

    /** Waits until the process answers or has ended. @return whether it answers */
    bool WaitServing();

    /** Asks the process to end. @return its exit status; nothing when it still runs at the time limit */
    std::optional<int> Stop();

    ChildProcess& Process() { return *m_process; }
    int HttpPort() const { return m_options.httpPort; }
    int WebSocketPort() const { return m_options.webSocketPort; }
    const std::filesystem::path& Home() const { return m_home.Path(); }
    const std::filesystem::path& UserData() const { return m_options.userData; }

    /** Its own installation, if there is one. */
    std::filesystem::path Installation() const { return Home() / "installation"; }

    /** The content of a file of the user data folder, for example of its folder Log. */
    std::string UserFile(const std::string& name) const { return ReadTextFile(UserData() / name); }

  private:
    void CopyInstallation() const;

    TemporaryFolder m_home;
    HostOptions m_options;
    std::unique_ptr<ChildProcess> m_process;
};

}  // namespace simulation
