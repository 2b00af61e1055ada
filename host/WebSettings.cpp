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

bool Write(const std::filesystem::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    return static_cast<bool>(file);
}

/** A browser must not read half of the file, so it is written beside and moved into place. */
bool Replace(const std::filesystem::path& path, const std::string& text) {
    const std::filesystem::path beside = path.string() + ".new";
    std::error_code error = std::make_error_code(std::errc::permission_denied);
    if (Write(beside, text)) {
        std::filesystem::rename(beside, path, error);
    }
    return !error;
}

/** For a folder that belongs to somebody else, with this file created for the server. */
bool WriteInPlace(const std::filesystem::path& path, const std::string& text) {
    std::error_code error;
    return std::filesystem::exists(path, error) && Write(path, text);
}

}  // namespace

void WriteWebSettings(const SGlobalConfig& config) {
    const std::filesystem::path path = std::filesystem::path(config.webui_path) / "settings.json";
    const std::string text = "{\"http_port\":" + std::to_string(config.http_port) +
                             ",\"websocket_port\":" + std::to_string(config.websocket_port) + "}\n";
    if (Read(path) != text && !Replace(path, text) && !WriteInPlace(path, text)) {
        RavLog::WriteSystemLog(RavLog::Info, "ServerHost",
                               path.string() + " can't be written; browsers take the WebSocket port 8081");
    }
}
