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

}  // namespace hv::internal
