#include "platform/FileNames.h"

#include <algorithm>
#include <array>
#include <string>

bool IsDeviceName(std::string_view name) {
    std::string stem(name.substr(0, name.find_first_of(".:")));
    stem.erase(stem.find_last_not_of(' ') + 1);
    std::transform(stem.begin(), stem.end(), stem.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    constexpr std::array<std::string_view, 6> devices = {"con", "prn", "aux", "nul", "conin$", "conout$"};
    if (std::find(devices.begin(), devices.end(), stem) != devices.end()) {
        return true;
    }
    // COM0 to COM9 and LPT0 to LPT9, the superscript digits 1 to 3 (U+00B9, U+00B2, U+00B3) included.
    const bool numbered = stem.starts_with("com") || stem.starts_with("lpt");
    return numbered && ((stem.size() == 4 && stem[3] >= '0' && stem[3] <= '9') ||
                        (stem.size() == 5 && stem[3] == '\xC2' &&
                         (stem[4] == '\xB9' || stem[4] == '\xB2' || stem[4] == '\xB3')));
}
