#include "platform/Folders.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>
#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace {

/** An environment variable that is an absolute path; empty when it isn't. */
std::string FolderFromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && *value == '/' ? value : std::string();
}

/** HOME, otherwise the folder in the password database; empty when there is neither. */
std::string HomeFolder() {
    std::string home = FolderFromEnvironment("HOME");
    if (home.empty()) {
        const long wanted = ::sysconf(_SC_GETPW_R_SIZE_MAX);
        std::vector<char> buffer(wanted > 0 ? static_cast<std::size_t>(wanted) : 16384);
        passwd record{};
        passwd* found = nullptr;
        if (::getpwuid_r(::getuid(), &record, buffer.data(), buffer.size(), &found) == 0 &&
            found != nullptr && found->pw_dir != nullptr) {
            home = found->pw_dir;
        }
    }
    return home;
}

/** The text between double quotes without its escapes; nothing when the closing quote is missing. */
std::optional<std::string> Unquote(std::string_view text) {
    if (!text.starts_with('"')) {
        return std::nullopt;
    }
    std::string value;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '"') {
            return value;
        }
        if (text[i] == '\\' && i + 1 < text.size()) {
            ++i;
        }
        value += text[i];
    }
    return std::nullopt;
}

/** The folder for the documents in one line of user-dirs.dirs; nothing when it is another line. */
std::optional<std::string> DocumentsOfLine(std::string_view line, const std::string& home) {
    constexpr std::string_view key = "XDG_DOCUMENTS_DIR=";
    constexpr std::string_view homeVariable = "$HOME";
    const std::size_t begin = line.find_first_not_of(" \t");
    if (begin == std::string_view::npos || !line.substr(begin).starts_with(key)) {
        return std::nullopt;
    }
    std::optional<std::string> value = Unquote(line.substr(begin + key.size()));
    if (!value) {
        return std::nullopt;
    }
    if (value->starts_with(homeVariable)) {
        value->replace(0, homeVariable.size(), home);
    }
    while (value->size() > 1 && value->ends_with('/')) {
        value->pop_back();
    }
    return value->starts_with('/') ? value : std::nullopt;
}

}  // namespace

std::string GetModuleDirectory() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path().string();
}

std::string GetDocumentsDirectory() {
    const std::string home = HomeFolder();
    if (home.empty()) {
        return {};
    }
    std::string folder = home == "/" ? "/Documents" : home + "/Documents";
    std::string configHome = FolderFromEnvironment("XDG_CONFIG_HOME");
    if (configHome.empty()) {
        configHome = home + "/.config";
    }
    std::ifstream file(configHome + "/user-dirs.dirs");
    // The last assignment counts, as in the shell that the file is written for.
    for (std::string line; std::getline(file, line);) {
        if (std::optional<std::string> named = DocumentsOfLine(line, home)) {
            folder = std::move(*named);
        }
    }
    return folder;
}

const char* GetUserDataFolderName() {
    return "Sennacroft/Varnholt";
}
