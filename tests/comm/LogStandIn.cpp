#include "CommFixture.h"
#include "platform/RavLog.h"

#include <atomic>

namespace {

std::atomic<int> g_lines = 0;

}  // namespace

int LogLines() {
    return g_lines;
}

/** Stands in for the system log, and counts. */
void RavLog::WriteSystemLog(EnLogLevel /*level*/, std::string_view /*place*/, std::string_view /*text*/) {
    ++g_lines;
}
