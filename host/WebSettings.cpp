#include "host/WebSettings.h"

#include "include/GlobalConfig.h"
#include "platform/RavLog.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace {

std::string Read(const std::filesystem::path& path) {
    const std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

}  // namespace

void WriteWebSettings(const SGlobalConfig& config) {
    const std::filesystem::path path = std::filesystem::path(config.webui_path) / "settings.json";
    const std::string text = "{\"http_port\":" + std::to_string(config.http_port) +
                             ",\"websocket_port\":" + std::to_string(config.websocket_port) + "}\n";
    if (Read(path) == text) {
        return;
    }
    // A browser must not meet half of it, so it is written beside and moved into place.
    const std::filesystem::path beside = path.string() + ".new";
    std::ofstream file(beside, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    std::error_code error = std::make_error_code(std::errc::permission_denied);
    if (file) {
        std::filesystem::rename(beside, path, error);
    }
    if (error) {
        RavLog::WriteSystemLog(RavLog::Info, "ServerHost",
                               path.string() + " can't be written; browsers take the WebSocket port 8081");
    }
}
