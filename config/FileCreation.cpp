#include "config/FileCreation.h"

#include "config/StandardOutput.h"
#include "platform/FileStreams.h"
#include "platform/Paths.h"

#include <filesystem>
#include <sstream>
#include <system_error>

namespace fs = std::filesystem;

bool CreateFileWithDirectories(const std::string& path) {
    const fs::path parent = PathFromNarrow(path).parent_path();
    std::error_code error;
    fs::create_directories(parent, error);
    if (error) {
        throw fs::filesystem_error("create_directories", parent, error);
    }
    if (OpenTextForWriting(path)) {
        return true;
    }
    std::ostringstream line;
    line << "无法创建文件: " << PathFromNarrow(path);
    PrintLine(line.str());
    return false;
}
