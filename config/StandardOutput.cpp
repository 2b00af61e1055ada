#include "config/StandardOutput.h"

#include "platform/RavLog.h"
#include "platform/StandardStreams.h"

#include <algorithm>
#include <iostream>
#include <mutex>
#include <string_view>

namespace {

std::mutex g_mutex;  // guards what follows, and keeps lines whole
bool g_isStuck = false;

bool Write(std::string_view text) {
    std::cout.clear();  // a write that failed says nothing about the next one
    while (!text.empty()) {
        if (!WaitForStandardOutput()) {
            return false;
        }
        std::cout << text.substr(0, g_standardOutputPiece) << std::flush;
        text.remove_prefix(std::min(text.size(), g_standardOutputPiece));
    }
    return true;
}

}  // namespace

void PrintLine(std::string line) {
    line += '\n';
    bool tells = false;
    {
        const std::lock_guard lock(g_mutex);
        const bool isWritten = Write(line);
        tells = !isWritten && !g_isStuck;
        g_isStuck = !isWritten;
    }
    if (tells) {
        RavLog::WriteSystemLog(RavLog::Warn, "PrintLine",
                               "standard output takes nothing more; lines are lost until it does");
    }
}
