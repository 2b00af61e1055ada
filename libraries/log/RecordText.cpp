#include "libraries/log/RecordText.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace RavLog {

namespace {

bool IsIn(unsigned char byte, unsigned char first, unsigned char last) {
    return byte >= first && byte <= last;
}

/** Length of the UTF-8 sequence that the text begins with; 0 when it begins with none. */
std::size_t SequenceLength(std::string_view text) {
    const auto byte = [text](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : static_cast<unsigned char>(0);
    };
    const unsigned char lead = byte(0);
    if (lead < 0x80) {
        return 1;
    }
    const std::size_t length = IsIn(lead, 0xC2, 0xDF)   ? 2
                               : IsIn(lead, 0xE0, 0xEF) ? 3
                               : IsIn(lead, 0xF0, 0xF4) ? 4
                                                        : 0;
    // Longer forms than needed, surrogates, and what lies above U+10FFFF.
    const unsigned char first = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned char last = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (length == 0 || !IsIn(byte(1), first, last)) {
        return 0;
    }
    for (std::size_t i = 2; i < length; ++i) {
        if (!IsIn(byte(i), 0x80, 0xBF)) {
            return 0;
        }
    }
    return length;
}

}  // namespace

std::string WithBadBytesShown(std::string text) {
    if (std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
        return text;
    }
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string shown;
    shown.reserve(text.size());
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t length = SequenceLength(rest);
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
