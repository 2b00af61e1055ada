// The host process of the server: it only starts, waits and stops.

#include "host/WebSettings.h"
#include "include/CenterServer.h"
#include "platform/FolderLock.h"
#include "platform/Folders.h"
#include "platform/Paths.h"
#include "platform/PortProbe.h"
#include "platform/ProcessLimits.h"
#include "platform/RavLog.h"
#include "platform/Service.h"
#include "platform/StandardStreams.h"
#include "platform/StopSignal.h"

#include <exception>
#include <filesystem>
#include <iostream>
#include <new>
#include <string>
#include <string_view>
#include <system_error>

namespace {

constexpr int kFailed = 1;      // exit status: the server could not start
constexpr int kWrongUsage = 2;  // exit status: an unknown option

constexpr const char* kHelpBeforeFolder =
    "Usage: ServerHost [--help | --version | --service install | --service remove]\n"
    "\n"
    "Runs the server until it gets SIGINT (Ctrl+C), SIGTERM or SIGHUP. It takes its ports and folders\n"
    "from LocalHost.config in the folder ";
constexpr const char* kHelpBehindFolder =
    " of the user's documents, a JSON file that is\n"
    "written at the first start: http_port, websocket_port, log_level, user_data_path.\n"
    "\n"
    "On Windows, --service install registers it as a service that starts at once and with the machine, and\n"
    "is started again after a failure; --service remove takes that back. Both need an administrator.\n"
    "\n"
    "Exit status: 0 stopped as asked, 1 could not start (standard error tells why), 2 unknown option.\n";

std::string ConfigFile(const SGlobalConfig& config) {
    return NarrowFromPath(PathFromNarrow(config.documents_dir) / GetUserDataFolderName() /
                          "LocalHost.config");
}

/** Reports a reason on standard error, and in the system log for later readers. */
void Tell(RavLog::EnLogLevel level, std::string_view text) {
    std::cerr << "ServerHost: " << text << std::endl;
    RavLog::WriteSystemLog(level, "ServerHost", text);
}

/** Reports the exception that ended the start, which may be a lack of memory. */
void TellFailure(const std::exception& error) noexcept {
    constexpr const char* text = "the server could not start: ";
    try {
        Tell(RavLog::Error, std::string(text) + error.what());
    } catch (const std::bad_alloc&) {
        std::cerr << "ServerHost: " << text << error.what() << std::endl;
    }
}

std::string PortProblem(const char* key, int port, const SGlobalConfig& config) {
    const std::string setting = std::string(key) + " in " + ConfigFile(config);
    if (port < 1 || port > 65535) {
        return "the port " + std::to_string(port) + " can't be listened on. Set " + setting +
               " to 1 to 65535.";
    }
    const EnPortState state = ProbePort(port);
    if (state == EnPortState::Free) {
        return "the port " + std::to_string(port) + " could not be listened on; System.log tells why.";
    }
    if (state == EnPortState::Withheld) {
        return "the system doesn't give the port " + std::to_string(port) +
               " to this program, which lacks the right. Set " + setting + " to another port.";
    }
    return "the port " + std::to_string(port) +
           " is taken by another program, perhaps by a server that runs already. Stop that program, or set " +
           setting + " to a free port.";
}

std::string WebSocketProblem(const SGlobalConfig& config) {
    if (config.websocket_port == config.http_port) {
        return "http_port and websocket_port in " + ConfigFile(config) +
               " are the same. Set one of them to another port.";
    }
    return PortProblem("websocket_port", config.websocket_port, config);
}

void PrintWhereabouts(const SGlobalConfig& config) {
    std::cout << config.softwareName << ' ' << config.version << " is running.\n"
              << "  Browser:     http://127.0.0.1:" << config.http_port
              << "/ (from other machines: this machine's address)\n"
              << "  WebSocket:   port " << config.websocket_port << '\n'
              << "  Settings:    " << ConfigFile(config) << '\n'
              << "  Documents:   " << config.user_data_path << '\n'
              << "  Logs:        " << config.user_data_path << "/Log\n"
              << "  Web root:    " << config.webui_path << '\n'
              << "Stop it with Ctrl+C or SIGTERM." << std::endl;
}

/** Held for the rest of the process: the last saves are waited for after main. */
const CFolderLock& LockDocuments(const SGlobalConfig& config) {
    static const auto* const lock = new CFolderLock(config.user_data_path);
    return *lock;
}

/** Only on standard error: the logs in the folder belong to the other server. */
void TellTaken(const std::string& owner, const SGlobalConfig& config) {
    std::cerr << "ServerHost: another server, "
              << (owner.empty() ? "of an unknown process" : "process " + owner)
              << ", works on the folder of the documents, " << config.user_data_path
              << ". Use that one, or stop it. A second server needs a home folder of its own, or another "
                 "user_data_path"
                 " and other ports in "
              << ConfigFile(config) << '.' << std::endl;
}

/** Starts the logs, and reports problems with their folder. */
void StartLogs(const SGlobalConfig& config, bool isNew, const CFolderLock& lock) {
    const std::string logProblem =
        RavLog::StartLogs(NarrowFromPath(PathFromNarrow(config.user_data_path) / "Log"), config.log_level);
    if (!logProblem.empty()) {
        std::cerr << "ServerHost: no log files are written: " << logProblem << std::endl;
    } else if (isNew) {
        Tell(RavLog::Warn, "the folder of the documents, " + config.user_data_path +
                               ", was not there and has been made: it holds no project yet.");
    }
    if (lock.State() == CFolderLock::EnState::Unavailable) {
        Tell(RavLog::Warn, "nothing keeps a second server from the folder of the documents, " +
                               config.user_data_path + ", which can't be locked: " + lock.Problem());
    }
}

/**
 * Whether this process serves the port; another process that does so is no success. wasFree: before the
 * start.
 */
bool IsServing(int port, bool wasFree) {
    return IsListeningHere(port).value_or(wasFree && !IsPortFree(port));
}

int Run(CStopSignal& stopSignal) {
    const SGlobalConfig& config = GetConfigInstance();
    std::error_code unknown;  // reported when the log folder is created below
    const bool isNew = !std::filesystem::exists(PathFromNarrow(config.user_data_path), unknown);
    // Before the documents and the logs are touched: a second instance must leave them alone.
    const CFolderLock& lock = LockDocuments(config);
    if (lock.State() == CFolderLock::EnState::Taken) {
        TellTaken(lock.Owner(), config);
        return kFailed;
    }
    StartLogs(config, isNew, lock);
    if (!IsPortFree(config.http_port)) {
        Tell(RavLog::Error, PortProblem("http_port", config.http_port, config));
        return kFailed;
    }
    const bool isWebSocketFree =
        config.websocket_port != config.http_port && IsPortFree(config.websocket_port);

    WriteWebSettings(config);
    CCenterServer server;
    server.InitServer();
    server.Running();
    if (!IsServing(config.http_port, true)) {
        Tell(RavLog::Error, PortProblem("http_port", config.http_port, config));
        return kFailed;
    }
    if (config.websocket_port == config.http_port || !IsServing(config.websocket_port, isWebSocketFree)) {
        Tell(RavLog::Warn, "browsers can look but not change or fire anything: " + WebSocketProblem(config));
    }
    PrintWhereabouts(config);
    stopSignal.Wait();
    server.StopServer();
    return 0;
}

/** Runs the server until it is asked to stop. @return the exit status */
int Serve() {
    CStopSignal stopSignal;
    RaiseDescriptorLimit();
    try {
        return Run(stopSignal);
    } catch (const std::exception& error) {
        TellFailure(error);
        return kFailed;
    }
}

}  // namespace

int main(int argc, char* argv[]) {
    PrepareStandardStreams();
    if (argc > 1) {
        const std::string_view option = argv[1];
        if (option == "--service" && argc == 3) {
            return HandleServiceCommand(argv[2], &Serve);
        }
        if (option == "--version") {
            std::cout << "ServerHost " << SERVER_VERSION << '\n';
            return 0;
        }
        const bool isHelp = option == "--help";
        (isHelp ? std::cout : std::cerr) << kHelpBeforeFolder << GetUserDataFolderName() << kHelpBehindFolder;
        return isHelp ? 0 : kWrongUsage;
    }
    return Serve();
}
