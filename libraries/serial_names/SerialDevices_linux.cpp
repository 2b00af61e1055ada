#include "libraries/serial_names/NamedSerialLines_linux.h"
#include "libraries/serial_names/SerialName.h"
#include "platform/SerialDevices.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <string_view>

namespace {

/** Removes one scalar value from the front of a UTF-8 text; U+FFFD for a byte that begins none. */
char32_t TakeScalar(std::string_view& text) {
    constexpr char32_t replacement = 0xfffd;
    const auto first = static_cast<std::uint8_t>(text.front());
    text.remove_prefix(1);
    if (first < 0x80) {
        return first;
    }
    const int length = std::countl_one(first);  // bytes in all
    if (length < 2 || length > 4 || text.size() + 1 < static_cast<std::size_t>(length)) {
        return replacement;
    }
    const std::string_view rest = text.substr(0, static_cast<std::size_t>(length) - 1);
    char32_t scalar = first & (0x7fU >> static_cast<unsigned>(length));
    for (const char c : rest) {
        const auto byte = static_cast<std::uint8_t>(c);
        if ((byte & 0xc0U) != 0x80U) {
            return replacement;
        }
        scalar = scalar << 6U | (byte & 0x3fU);
    }
    text.remove_prefix(rest.size());
    return scalar;
}

std::wstring Widen(std::string_view text) {
    std::wstring wide;
    while (!text.empty()) {
        wide += static_cast<wchar_t>(TakeScalar(text));
    }
    return wide;
}

}  // namespace

std::vector<SSerialDevice> ListSerialDevices() {
    std::vector<SSerialDevice> devices;
    for (const auto& [number, line] : NameSerialLines()) {
        const std::string name = SerialName(number);
        devices.push_back({Widen(name), Widen(line.kind + " (" + name + ")"), Widen(line.description),
                           Widen(line.hardwareId)});
    }
    return devices;
}
