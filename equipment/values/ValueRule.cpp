#include "equipment/values/ValueRule.h"

#include "platform/Utf8.h"

#include <charconv>
#include <cmath>

namespace {

/** The text, with U+FFFD for each byte that is not UTF-8: it has to be sent as JSON. */
std::string ReadableText(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        const std::size_t length = Utf8SequenceLength(bytes);
        text += length == 0 ? std::string_view("\xEF\xBF\xBD") : bytes.substr(0, length);
        bytes.remove_prefix(length == 0 ? 1 : length);
    }
    return text;
}

}  // namespace

std::optional<double> ParseNumber(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(' ');
    if (begin == std::string_view::npos) {
        return std::nullopt;
    }
    text = text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) {
            return std::nullopt;
        }
    }
    double number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = result.ec == std::errc() && result.ptr == text.data() + text.size();
    return isWhole && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<ValueContent> SValueRule::Apply(std::string_view captured) const {
    const auto row = table.find(captured);
    const std::string_view text = row == table.end() ? captured : std::string_view(row->second);
    if (!isNumber) {
        return ReadableText(text);
    }
    const std::optional<double> parsed = ParseNumber(text);
    const double number = parsed.value_or(0) * scale + offset;
    return parsed && std::isfinite(number) ? std::optional<ValueContent>(number) : std::nullopt;
}
