#include "platform/WebOrigins.h"

#include "platform/RavLog.h"

void SetAllowedHosts(const std::vector<std::string>& names) {
    if (!names.empty()) {
        RavLog::WriteSystemLog(
            RavLog::Warn, "HttpServer",
            "\"allowed_hosts\" has no effect: the installed HTTP library takes writes from "
            "pages of any host");
    }
}
