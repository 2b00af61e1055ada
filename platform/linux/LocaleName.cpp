#include "platform/LocaleName.h"

#include "platform/linux/LocaleText.h"

#include <cstdlib>
#include <fstream>

std::wstring GetSystemLocaleName() {
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0') {
            return LocaleNameOfPosix(value);
        }
    }
    for (const char* path : {"/etc/locale.conf", "/etc/default/locale"}) {
        std::ifstream file(path);
        const std::string value = LocaleOfSettings(file);
        if (!value.empty()) {
            return LocaleNameOfPosix(value);
        }
    }
    return {};
}
