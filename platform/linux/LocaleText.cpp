#include "platform/linux/LocaleText.h"

#include <algorithm>
#include <map>

namespace {

std::string WithoutQuotes(std::string_view text) {
    const std::size_t end = text.find_last_not_of(" \t\r");
    text = text.substr(0, end == std::string_view::npos ? 0 : end + 1);
    if (text.size() >= 2 && (text.front() == '"' || text.front() == '\'') && text.back() == text.front()) {
        text = text.substr(1, text.size() - 2);
    }
    return std::string(text);
}

}  // namespace

std::wstring LocaleNameOfPosix(std::string_view posixName) {
    const std::string_view name = posixName.substr(0, posixName.find_first_of(".@"));
    if (name == "C" || name == "POSIX") {
        return {};
    }
    std::wstring wide(name.begin(), name.end());
    std::replace(wide.begin(), wide.end(), L'_', L'-');
    return wide;
}

std::string LocaleOfSettings(std::istream& settings) {
    std::map<std::string, std::string, std::less<>> values;
    for (std::string line; std::getline(settings, line);) {
        std::string_view assignment = line;
        if (assignment.starts_with("export ")) {
            assignment.remove_prefix(7);
        }
        const std::size_t equals = assignment.find('=');
        if (equals != std::string_view::npos) {
            values[std::string(assignment.substr(0, equals))] = WithoutQuotes(assignment.substr(equals + 1));
        }
    }
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const auto value = values.find(name);
        if (value != values.end() && !value->second.empty()) {
            return value->second;
        }
    }
    return {};
}
