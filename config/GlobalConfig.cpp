#include "include/GlobalConfig.h"

#include "config/FileCreation.h"
#include "config/JsonDepth.h"
#include "config/JsonFile.h"
#include "config/JsonNumber.h"
#include "config/UnusableFile.h"
#include "config/VersionInfo.h"
#include "platform/FileStreams.h"
#include "platform/Folders.h"
#include "platform/Paths.h"
#include "platform/RavLog.h"
#include "platform/TrafficLimit.h"
#include "platform/WebOrigins.h"

#include <cstdint>
#include <filesystem>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

#include <hv/hpath.h>
#include <nlohmann/json.hpp>

namespace fs = std::filesystem;

namespace {

/** True when the file exists and is not empty. */
bool HasContent(const std::string& name) {
    const fs::path path = PathFromNarrow(name);
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::status_known(status)) {
        throw fs::filesystem_error("exists", path, error);
    }
    if (!fs::exists(status)) {
        return false;
    }
    const std::uintmax_t size = fs::file_size(path, error);
    if (error) {
        throw fs::filesystem_error("file_size", path, error);
    }
    return size > 0;
}

/** Why the text is not one whole JSON document, with the place; empty when it is. */
std::string SyntaxProblem(const std::string& path) {
    std::ifstream file = OpenTextForReading(path);
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (IsNestedTooDeep(text)) {
        return "nested too deep";
    }
    try {
        const nlohmann::json whole = nlohmann::json::parse(text);
        return {};
    } catch (const nlohmann::json::exception& error) {
        return error.what();
    }
}

/** For the operator: the settings before an error count, even a number that the error has cut short. */
void TellSyntaxProblem(const std::string& path, const SGlobalConfig& config) {
    const std::string problem = SyntaxProblem(path);
    if (!problem.empty()) {
        RavLog::WriteSystemLog(RavLog::Error, "Start",
                               path + " has an error, and what stands behind it doesn't count: " + problem +
                                   ". The server goes on with http_port " + std::to_string(config.http_port) +
                                   ", websocket_port " + std::to_string(config.websocket_port) +
                                   ", log_level " + config.log_level + ", user_data_path " +
                                   config.user_data_path);
    }
}

void ReadConfigFile(const std::string& path, SGlobalConfig& config) {
    const nlohmann::json document = LoadJsonFromFile(path);
    const auto take = [&](const char* key, auto setField) {
        if (const auto value = document.find(key); value != document.end()) {
            UseFile(path + ": " + key, [&] { setField(*value); });
        }
    };
    take("http_port", [&](const auto& value) { config.http_port = JsonToInt32(value); });
    take("websocket_port", [&](const auto& value) { config.websocket_port = JsonToInt32(value); });
    take("log_level", [&](const auto& value) { config.log_level = value.template get<std::string>(); });
    take("allowed_hosts",
         [&](const auto& value) { SetAllowedHosts(value.template get<std::vector<std::string>>()); });
    take("traffic_bytes", [&](const auto& value) { TrafficLimit() = JsonToInt32(value); });
    take("user_data_path",
         [&](const auto& value) { config.user_data_path = value.template get<std::string>(); });
    TellSyntaxProblem(path, config);
}

void WriteConfigFile(const std::string& path, const SGlobalConfig& config) {
    if (!CreateFileWithDirectories(path)) {
        return;
    }
    SaveJsonToFile({{"http_port", config.http_port},
                    {"websocket_port", config.websocket_port},
                    {"log_level", config.log_level},
                    {"user_data_path", config.user_data_path},
                    {"webui_path", config.webui_path}},
                   path);
}

}  // namespace

SGlobalConfig::SGlobalConfig() {
    app_dir = GetModuleDirectory();
    LoadVersionInfo(*this);
    documents_dir = GetDocumentsDirectory();
    user_data_path = HPath::join(documents_dir, GetUserDataFolderName());
    webui_path = HPath::join(app_dir, "dist");
    index_path = HPath::join(webui_path, "index.html");
    resource_path = HPath::join(app_dir, "Resource");

    const std::string path = HPath::join(user_data_path, "LocalHost.config");
    bool isGiven = false;
    UseFile(path, [&] {
        isGiven = HasContent(path);
        if (!isGiven) {
            WriteConfigFile(path, *this);
        }
    });
    if (isGiven) {
        ReadConfigFile(path, *this);  // names the key that can't be used
    }
}

SGlobalConfig& GetConfigInstance() {
    static SGlobalConfig instance;
    return instance;
}
