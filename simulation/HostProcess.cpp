#include "simulation/HostProcess.h"

#include "simulation/HttpClient.h"
#include "simulation/Machine.h"
#include "simulation/Socket.h"

#include <cstdlib>
#include <system_error>

#include <nlohmann/json.hpp>

namespace simulation {

namespace {

std::filesystem::path Program() {
    const char* program = std::getenv("SERVER_HOST");
    return program != nullptr ? program : SERVER_HOST_PROGRAM;
}

}  // namespace

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
    if (m_options.ownInstallation) {
        CopyInstallation();
    }
}

// The program and the libraries beside it.
void HostProcess::CopyInstallation() const {
    for (const char* folder : {"dist", "Resource"}) {
        std::filesystem::create_directories(Installation() / folder);
    }
    for (const auto& entry : std::filesystem::directory_iterator(Program().parent_path())) {
        const std::string name = entry.path().filename().string();
        if (name == Program().filename() || name.starts_with("lib") || name.ends_with(".dll")) {
            std::filesystem::copy_file(entry.path(), Installation() / name);
        }
    }
}

void HostProcess::Launch() {
    const auto program = m_options.ownInstallation ? Installation() / Program().filename() : Program();
    ProcessOptions options{m_options.runner, HomeEnvironment(Home()), Home(), m_options.descriptorLimit};
    options.command.push_back(program.string());
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
