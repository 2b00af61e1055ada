#include "simulation/HostProcess.h"

#include "simulation/HttpClient.h"
#include "simulation/Socket.h"

#include <cstdlib>
#include <system_error>

#include <nlohmann/json.hpp>

namespace simulation {

HostProcess::HostProcess(HostOptions options) : m_options(std::move(options)) {
    const auto standard = Home() / "Documents" / "Sennacroft" / "Varnholt";
    nlohmann::json config;
    if (m_options.userData.empty()) {
        m_options.userData = standard;
    } else {
        config["user_data_path"] = m_options.userData.string();
    }
    for (int* port : {&m_options.httpPort, &m_options.webSocketPort}) {
        *port = *port == 0 ? FreePort() : *port;
    }
    config["http_port"] = m_options.httpPort;
    config["websocket_port"] = m_options.webSocketPort;
    config["log_level"] = "info";
    WriteFile(standard / "LocalHost.config", config.dump(4));
    std::filesystem::create_directories(m_options.userData);
}

void HostProcess::Launch() {
    const char* program = std::getenv("SERVER_HOST");
    ProcessOptions options{{program != nullptr ? program : SERVER_HOST_PROGRAM},
                           {"-uXDG_CONFIG_HOME", "HOME=" + Home().string(), "LC_ALL=en_US.UTF-8"},
                           Home(),
                           m_options.descriptorLimit};
    options.environment.insert(options.environment.end(), m_options.environment.begin(),
                               m_options.environment.end());
    m_process = std::make_unique<ChildProcess>(options);
}

bool HostProcess::WaitServing() {
    bool answered = false;
    WaitUntil([&] {
        try {
            answered = HttpClient(HttpPort()).Get("/api/centralControl/getConfigList").status != 0;
        } catch (const std::system_error&) {  // not listening yet
        }
        return answered || !Process().Running();
    });
    return answered;
}

void HostProcess::Start() {
    Launch();
    if (!WaitServing()) {
        throw std::runtime_error("the host did not come up: " + Process().Output() + Process().ErrorOutput());
    }
}

std::optional<int> HostProcess::Stop() {
    Process().Send(EnSignal::Terminate);
    return Process().WaitExit();
}

}  // namespace simulation
