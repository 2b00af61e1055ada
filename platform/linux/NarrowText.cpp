#include "platform/NarrowText.h"

#include <cstdint>

namespace {

/** The six low bits of a byte after the first one, from a position in the scalar value. */
char Continuation(std::uint32_t scalar, unsigned shift) {
    return static_cast<char>(0x80U | ((scalar >> shift) & 0x3fU));
}

void Append(std::string& text, std::uint32_t scalar) {
    if (scalar < 0x80) {
        text += static_cast<char>(scalar);
    } else if (scalar < 0x800) {
        text += {static_cast<char>(0xc0U | (scalar >> 6U)), Continuation(scalar, 0)};
    } else if (scalar < 0x10000) {
        text +=
            {static_cast<char>(0xe0U | (scalar >> 12U)), Continuation(scalar, 6), Continuation(scalar, 0)};
    } else {
        text += {static_cast<char>(0xf0U | (scalar >> 18U)), Continuation(scalar, 12),
                 Continuation(scalar, 6), Continuation(scalar, 0)};
    }
}

bool IsScalar(std::uint32_t value) {
    return value < 0xd800 || (value > 0xdfff && value <= 0x10ffff);
}

}  // namespace

std::string NarrowText(std::wstring_view text) {
    constexpr std::uint32_t replacement = 0xfffd;
    std::string narrow;
    for (const wchar_t c : text) {
        const std::uint32_t value = std::char_traits<wchar_t>::to_int_type(c);
        Append(narrow, IsScalar(value) ? value : replacement);
    }
    return narrow;
}
