#include "libraries/comm/SerialNames.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace comm {

bool IsSerialName(const std::string& comPort) {
    constexpr std::string_view prefix = "COM";
    return comPort.starts_with(prefix) && comPort.size() > prefix.size() &&
           comPort.size() <= prefix.size() + 4 &&
           std::all_of(comPort.begin() + static_cast<std::ptrdiff_t>(prefix.size()), comPort.end(),
                       [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace comm
