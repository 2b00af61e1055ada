#include "webapi/ClientErrorLog.h"

#include "include/GlobalConfig.h"
#include "platform/FileStreams.h"
#include "platform/Paths.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <mutex>

#include <hv/hpath.h>

namespace {

std::mutex g_fileMutex;  // from the making of the folder to the closing of the file

/** "[2026-11-21 16:04:24] " in local time. Called under the mutex: the library's result is one for all. */
std::string TimeStamp() {
    const std::time_t now = std::time(nullptr);
    char text[32];
    return {text, std::strftime(text, sizeof text, "[%Y-%m-%d %H:%M:%S] ", std::localtime(&now))};
}

void AppendRecord(const std::string& folder, const std::string& line) {
    std::error_code ignored;
    std::filesystem::create_directories(PathFromNarrow(folder), ignored);
    std::ofstream file = OpenTextForAppending(HPath::join(folder, "ClientError.log"));
    if (file) {
        file << TimeStamp() + SanitizeLogLine(line) + "\r\n";
    }
}

}  // namespace

void AppendClientField(std::ostream& line, const char* key, const nlohmann::json& report) {
    if (!report.is_object()) {
        return;
    }
    const auto field = report.find(key);
    if (field == report.end() || field->is_null()) {
        return;
    }
    line << ' ' << key << '=';
    if (field->is_string()) {
        line << field->get_ref<const std::string&>();
    } else {
        line << field->dump();
    }
}

std::string SanitizeLogLine(const std::string& text) {
    std::string line = text;
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\t' || c == '\n' || c == '\r'; }, ' ');
    return line;
}

void AppendClientErrorLog(const std::string& line) {
    const std::string& folder = GetConfigInstance().user_data_path;
    if (folder.empty() || line.empty()) {
        return;
    }
    const std::lock_guard lock(g_fileMutex);
    try {
        AppendRecord(folder, line);
    } catch (...) {  // NOLINT(bugprone-empty-catch)
        // The report is in the application log nevertheless.
    }
}
