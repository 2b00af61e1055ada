#include "libraries/http/src/ErrorReport.h"

#include "platform/RavLog.h"

#include <new>
#include <string>

namespace hv::internal {

void ReportError(std::string_view text, std::string_view reason) noexcept {
    std::string line;
    try {
        line.append(text).append(reason);
    } catch (const std::bad_alloc&) {
        RavLog::WriteSystemLog(RavLog::Error, "HttpServer", text);
        return;
    }
    RavLog::WriteSystemLog(RavLog::Error, "HttpServer", line);
}

std::string Shown(std::string_view text) {
    constexpr std::size_t most = 200;
    std::string shown(text.substr(0, most));
    for (char& c : shown) {
        c = static_cast<unsigned char>(c) < 0x20 ? '?' : c;
    }
    return shown;
}

}  // namespace hv::internal
