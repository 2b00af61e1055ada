#include "config/UnusableFile.h"

#include "platform/RavLog.h"

#include <iostream>

void TellUnusableFile(const std::string& path, const std::exception& error) {
    const std::string text = path + " can't be used: " + error.what() +
                             ". Correct the file, or move it away: the server starts with the default then.";
    std::cerr << text << std::endl;
    RavLog::WriteSystemLog(RavLog::Error, "Start", text);
}
