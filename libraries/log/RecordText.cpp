#include "libraries/log/RecordText.h"

#include "platform/Utf8.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace RavLog {

std::string WithBadBytesShown(std::string text) {
    if (std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
        return text;
    }
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string shown;
    shown.reserve(text.size());
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t length = Utf8SequenceLength(rest);
        if (length == 0) {
            const auto byte = static_cast<unsigned char>(rest.front());
            shown += {'\\', 'x', digits[byte >> 4U], digits[byte & 0x0FU]};
        }
        shown += rest.substr(0, length);
        rest.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return shown;
}

}  // namespace RavLog
