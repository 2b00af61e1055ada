#include "platform/Utf8.h"

#include <algorithm>
#include <stdexcept>

namespace {

bool IsIn(unsigned char byte, unsigned char first, unsigned char last) {
    return byte >= first && byte <= last;
}

}  // namespace

std::size_t Utf8SequenceLength(std::string_view text) {
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

char32_t TakeUtf8Character(std::string_view& text) {
    constexpr char32_t replacement = 0xFFFD;
    const std::size_t length = Utf8SequenceLength(text);
    const auto lead = static_cast<unsigned char>(text.front());
    // The first byte of a longer sequence has as many ones as the sequence has bytes, and a zero behind them.
    char32_t character = length <= 1 ? lead : lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        character = character << 6U | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
    return length == 0 ? replacement : character;
}

std::u8string Utf8FromBytes(const std::string& bytes) {
    for (std::string_view rest = bytes; !rest.empty();) {
        const std::size_t length = rest.front() == '\0' ? 0 : Utf8SequenceLength(rest);
        if (length == 0) {
            throw std::range_error("the text is no UTF-8, or holds a NUL");
        }
        rest.remove_prefix(length);
    }
    return {bytes.begin(), bytes.end()};
}
