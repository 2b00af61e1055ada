#include "libraries/serial_names/SerialName.h"

#include "platform/SerialNames.h"

#include <charconv>
#include <string_view>

namespace {

constexpr std::string_view kPrefix = "COM";

}  // namespace

std::string SerialName(int number) {
    return std::string(kPrefix) + std::to_string(number);
}

int SerialNumber(const std::string& comPort) {
    int number = 0;
    const char* end = comPort.data() + comPort.size();
    if (!comPort.starts_with(kPrefix) || comPort.size() == kPrefix.size() || comPort[kPrefix.size()] < '1' ||
        std::from_chars(comPort.data() + kPrefix.size(), end, number).ptr != end ||
        number > kHighestSerialNumber) {
        return 0;
    }
    return number;
}
