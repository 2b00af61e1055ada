#include "libraries/serial_names/NamedSerialLines_linux.h"
#include "libraries/serial_names/SerialName.h"
#include "platform/SerialDevices.h"
#include "platform/Utf8.h"

#include <string_view>

namespace {

std::wstring Widen(std::string_view text) {
    std::wstring wide;
    while (!text.empty()) {
        wide += static_cast<wchar_t>(TakeUtf8Character(text));
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
