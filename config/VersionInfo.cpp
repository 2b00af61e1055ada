#include "config/VersionInfo.h"

#include "include/GlobalConfig.h"
#include "platform/FileStreams.h"
#include "platform/LocaleName.h"

#include <string>
#include <utility>

namespace {

std::string ReadLine(std::ifstream& file, const char* whenMissing) {
    std::string line;
    std::getline(file, line);
    if (!file) {
        return whenMissing;
    }
    // On the systems where a text stream leaves CR LF alone.
    if (line.ends_with('\r')) {
        line.pop_back();
    }
    return line;
}

}  // namespace

void LoadVersionInfo(SGlobalConfig& config) {
    const std::wstring locale = GetSystemLocaleName();
    config.system_language = locale == L"zh-CN" || locale == L"zh-TW" ? 0 : 1;

    std::ifstream file = OpenTextForReading(config.app_dir + "/Resource/Version.info");
    if (!file) {
        return;
    }
    config.softwareName = ReadLine(file, "Varnholt");
    config.version = ReadLine(file, "1.0");
    config.buildVersion = ReadLine(file, "0");
    config.buildTime = ReadLine(file, "00/00/00 00:00:00");
}
