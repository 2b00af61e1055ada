#include "libraries/http/src/Text.h"

#include <algorithm>
#include <charconv>

namespace hv::internal {

char LowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

std::string LowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        c = LowerCase(c);
    }
    return lower;
}

bool IsLetterOrDigit(char c) {
    return (c >= '0' && c <= '9') || (LowerCase(c) >= 'a' && LowerCase(c) <= 'z');
}

bool EqualsCaseless(std::string_view left, std::string_view right) {
    return left.size() == right.size() &&
           std::equal(left.begin(), left.end(), right.begin(),
                      [](char a, char b) { return LowerCase(a) == LowerCase(b); });
}

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) {
        text.remove_suffix(1);
    }
    return text;
}

std::string_view TakeUntil(std::string_view& text, char separator) {
    const std::size_t at = text.find(separator);
    const std::string_view part = text.substr(0, at);
    text.remove_prefix(at == std::string_view::npos ? text.size() : at + 1);
    return part;
}

std::optional<std::uint64_t> ParseDecimal(std::string_view text) {
    std::uint64_t value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || result.ec != std::errc() || result.ptr != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

}  // namespace hv::internal
