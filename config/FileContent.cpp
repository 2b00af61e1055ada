#include "config/FileContent.h"

#include "config/JsonDepth.h"
#include "platform/Paths.h"

#include <array>
#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

namespace fs = std::filesystem;

SFileContent ReadFileContent(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(PathFromNarrow(path), error);
    if (status.type() == fs::file_type::not_found) {
        return {EnFileState::Missing, {}};
    }
    if (!fs::status_known(status)) {
        return {EnFileState::Unreadable, {}};
    }
    if (!fs::is_regular_file(status)) {
        return {EnFileState::NoFile, {}};
    }
    std::ifstream file(PathFromNarrow(path), std::ios::binary);
    if (!file) {
        return {EnFileState::Unreadable, {}};
    }
    SFileContent content{EnFileState::Read, {}};
    std::array<char, 65536> part{};
    while (file) {
        file.read(part.data(), part.size());
        content.bytes.append(part.data(), static_cast<std::size_t>(file.gcount()));
    }
    return file.bad() ? SFileContent{EnFileState::Unreadable, {}} : content;
}

bool IsWholeJson(const std::string& text) {
    return !IsNestedTooDeep(text) && nlohmann::json::accept(text);
}
