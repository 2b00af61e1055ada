#include "libraries/comm/PortLog.h"

namespace comm {

namespace {

constexpr int kLinesAMinute = 10;

}  // namespace

void CPortLog::Note(std::string_view text) {
    m_lastError = ErrorNone;
    Write(RavLog::Info, std::string(text));
}

void CPortLog::Failed(std::string_view text, EnError error) {
    if (error == m_lastError) {
        return;
    }
    m_lastError = error;
    Write(RavLog::Warn, std::string(text) + ", error " + std::to_string(error));
}

void CPortLog::Write(RavLog::EnLogLevel level, const std::string& text) {
    const auto now = Clock::now();
    if (now - m_minute >= std::chrono::minutes(1)) {
        m_minute = now;
        m_lines = 0;
        if (m_omitted > 0) {
            RavLog::WriteSystemLog(RavLog::Info, m_name, std::to_string(m_omitted) + " lines left out");
            m_omitted = 0;
        }
    }
    if (m_lines == kLinesAMinute) {
        ++m_omitted;
        return;
    }
    ++m_lines;
    RavLog::WriteSystemLog(level, m_name, text);
}

}  // namespace comm
