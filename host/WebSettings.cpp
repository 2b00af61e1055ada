#include "host/WebSettings.h"

#include "include/GlobalConfig.h"
#include "platform/DurableFile.h"
#include "platform/Paths.h"
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

/** For a folder that belongs to somebody else, with this file created for the server. */
bool WriteInPlace(const std::filesystem::path& path, const std::string& text) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        return false;
    }
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    return static_cast<bool>(file);
}

}  // namespace

void WriteWebSettings(const SGlobalConfig& config) {
    const std::filesystem::path path = PathFromNarrow(config.webui_path) / "settings.json";
    const std::string text = "{\"http_port\":" + std::to_string(config.http_port) +
                             ",\"websocket_port\":" + std::to_string(config.websocket_port) + "}\n";
    if (Read(path) == text) {
        return;
    }
    const std::string name = NarrowFromPath(path);
    // A browser must not read half of the file, so it is replaced as a whole where that can be done.
    if (ReplaceFileDurably(name, text) && !WriteInPlace(path, text)) {
        RavLog::WriteSystemLog(RavLog::Info, "ServerHost",
                               name + " can't be written; browsers take the WebSocket port 8081");
    }
}
