#include "support/HostProcess.h"

#include "support/HttpClient.h"
#include "support/Socket.h"

#include <cstdlib>
#include <system_error>

#include <nlohmann/json.hpp>

namespace support {

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

std::string HostProcess::Program() {
    const char* program = std::getenv("SERVER_HOST");
    return program != nullptr ? program : SERVER_HOST_PROGRAM;
}

void HostProcess::Launch() {
    ProcessOptions options;
    options.command = {Program()};
    options.environment = m_options.environment;
    options.environment.insert({{"HOME", Home().string()},
                                {"LC_ALL", "en_US.UTF-8"},
                                {"XDG_CONFIG_HOME", ""},
                                {"XDG_DOCUMENTS_DIR", ""}});
    options.outputFolder = Home();
    options.descriptorLimit = m_options.descriptorLimit;
    m_process = std::make_unique<ChildProcess>(options);
}

void HostProcess::Start() {
    Launch();
    bool answered = false;
    WaitUntil([&] {
        try {
            answered = HttpClient(HttpPort()).Get("/api/centralControl/getConfigList").status == 200;
        } catch (const std::system_error&) {  // not listening yet
        }
        return answered || !Process().Running();
    });
    if (!answered) {
        throw std::runtime_error("the host did not come up: " + Process().Output() + Process().ErrorOutput());
    }
}

std::optional<int> HostProcess::Stop() {
    Process().Send(EnSignal::Terminate);
    return Process().WaitExit();
}

void HostProcess::Kill() {
    Process().Send(EnSignal::Kill);
    Process().WaitExit();
}

}  // namespace support
