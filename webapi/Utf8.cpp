#include "webapi/Utf8.h"

#include <cstdint>
#include <stdexcept>

namespace {

/** Length of the sequence at the beginning of a text; 0 when there is none that is allowed. */
std::size_t SequenceLength(const std::u8string& text, std::size_t at) {
    const char8_t lead = text[at];
    if (lead < 0x80) {
        return lead == 0 ? 0 : 1;
    }
    const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length == 0 || text.size() - at < length) {
        return 0;
    }
    std::uint32_t character = lead & (0x7FU >> length);
    for (std::size_t i = at + 1; i < at + length; ++i) {
        if ((text[i] & 0xC0U) != 0x80U) {
            return 0;
        }
        character = character << 6U | (text[i] & 0x3FU);
    }
    const bool isOverlong = (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
    const bool isSurrogate = character >= 0xD800 && character < 0xE000;
    return isOverlong || isSurrogate || character > 0x10FFFF ? 0 : length;
}

}  // namespace

std::u8string Utf8FromBytes(const std::string& bytes) {
    std::u8string text(bytes.begin(), bytes.end());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = SequenceLength(text, at);
        if (length == 0) {
            throw std::range_error("the text is no UTF-8, or holds a NUL");
        }
        at += length;
    }
    return text;
}
