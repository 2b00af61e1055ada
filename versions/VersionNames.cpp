#include "versions/VersionNames.h"

#include "config/BrokenFile.h"
#include "config/FileContent.h"
#include "config/InPlaceSave.h"
#include "platform/DurableFile.h"
#include "platform/RavLog.h"
#include "platform/Utf8.h"
#include "versions/VersionProblem.h"

#include <optional>
#include <system_error>
#include <utility>

#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

constexpr int kFormat = 1;

std::string PathIn(const std::string& folder) {
    return folder + "/versions.json";
}

/** The names in a text; nothing when it is damaged, or of a later format. */
std::optional<CVersionNames::Names> ParseNames(const std::string& text) {
    if (!IsWholeJson(text)) {
        return std::nullopt;
    }
    const json document = json::parse(text);
    const auto format = document.find("format");
    const auto names = document.find("names");
    if (format == document.end() || *format != kFormat || names == document.end() || !names->is_object()) {
        return std::nullopt;
    }
    CVersionNames::Names result;
    for (const auto& [id, name] : names->items()) {
        if (name.is_string()) {
            result.emplace(id, name.get<std::string>());
        }
    }
    return result;
}

}  // namespace

std::string CheckedVersionName(const std::string& name) {
    const std::size_t begin = name.find_first_not_of(' ');
    if (begin == std::string::npos) {
        return {};
    }
    std::string checked = name.substr(begin, name.find_last_not_of(' ') + 1 - begin);
    std::size_t length = 0;
    for (std::string_view rest = checked; !rest.empty(); ++length) {
        const char32_t character = TakeUtf8Character(rest);
        if (character < U' ' || (character >= U'\x7f' && character < U'\xa0')) {
            throw CVersionProblem(EnVersionProblem::NameUnreadable, "the name has control characters");
        }
    }
    if (length > kLongestVersionName) {
        throw CVersionProblem(EnVersionProblem::NameTooLong,
                              "the name has " + std::to_string(length) + " characters");
    }
    return checked;
}

CVersionNames::Names CVersionNames::Read(const std::string& folder) {
    const std::string path = PathIn(folder);
    const SFileContent content = ReadFileContent(path);
    std::optional<Names> names;
    if (content.state == EnFileState::Missing) {
        names.emplace();
    } else if (content.state == EnFileState::Read) {
        names = ParseNames(content.bytes);
    }
    const CLock lock(m_mutex);
    if (!std::exchange(m_isTold, !names) && !names) {
        RavLog::WriteSystemLog(RavLog::Error, "VersionNames",
                               path +
                                   " can't be used: the versions have no names, but none is removed that "
                                   "the file mentions");
    }
    return names ? *std::move(names) : Names();
}

bool CVersionNames::IsNamed(const std::string& folder, const std::string& id) {
    const SFileContent content = ReadFileContent(PathIn(folder));
    if (content.state == EnFileState::Missing) {
        return false;
    }
    if (content.state != EnFileState::Read) {
        return true;
    }
    const std::optional<Names> names = ParseNames(content.bytes);
    return names ? names->contains(id) : content.bytes.find(id) != std::string::npos;
}

void CVersionNames::Write(const std::string& folder, const Names& names) {
    const std::string path = PathIn(folder);
    const SFileContent content = ReadFileContent(path);
    if (content.state != EnFileState::Missing && !ParseNames(content.bytes)) {
        if (const std::error_code error = KeepBrokenFile(path, content).error) {
            throw std::system_error(error, path + " is damaged and can't be kept");
        }
    }
    const std::string text = SerialiseDocument({{"format", kFormat}, {"names", names}});
    if (const std::error_code error = ReplaceFileDurably(path, text)) {
        throw std::system_error(error, path);
    }
}
