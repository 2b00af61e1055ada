#include "libraries/http/src/UrlText.h"

#include "libraries/http/src/Text.h"

#include <charconv>

#include <hv/hurl.h>

std::string HUrl::unescape(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned value = 0;
        const char* first = text.data() + i + 1;
        if (text[i] == '%' && i + 2 < text.size() &&
            std::from_chars(first, first + 2, value, 16).ptr == first + 2) {
            out += static_cast<char>(value);
            i += 2;
        } else {
            out += text[i] == '+' ? ' ' : text[i];
        }
    }
    return out;
}

namespace hv::internal {

std::optional<std::string> PercentDecoded(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            out += text[i];
            continue;
        }
        unsigned value = 0;
        const char* first = text.data() + i + 1;
        if (i + 2 >= text.size() || std::from_chars(first, first + 2, value, 16).ptr != first + 2) {
            return std::nullopt;
        }
        out += static_cast<char>(value);
        i += 2;
    }
    return out;
}

void ReadQuery(std::string_view query, QueryParams& params) {
    while (!query.empty()) {
        std::string_view value = TakeUntil(query, '&');
        const std::string_view key = TakeUntil(value, '=');
        if (!key.empty()) {
            params.emplace(HUrl::unescape(std::string(key)), HUrl::unescape(std::string(value)));
        }
    }
}

}  // namespace hv::internal
