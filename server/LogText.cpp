#include "server/LogText.h"

#include <ctime>
#include <memory>

namespace {

std::uint64_t Now() {
    return static_cast<std::uint64_t>(std::time(nullptr));
}

void Send(std::shared_ptr<RavLog::CLogEvent> event, const std::string& text) {
    const RavLog::CLogEventWrap wrap(std::move(event));
    wrap.GetEvent()->Format("%s", text.c_str());
}

}  // namespace

void WriteRootLog(RavLog::EnLogLevel level, const std::string& function, const std::string& text) {
    const auto logger = LogRoot();
    if (logger && logger->level <= level) {
        Send(std::make_shared<RavLog::CLogEvent>(logger, level, Now(), function), text);
    }
}

void WriteOperationLog(const std::string& client, const std::string& path, const std::string& text) {
    const auto logger = LogOperation();
    if (logger && logger->level <= RavLog::Unknow) {
        Send(std::make_shared<RavLog::CLogEvent>(logger, RavLog::Unknow, Now(), client, path), text);
    }
}
