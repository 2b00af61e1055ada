#pragma once

#include "libraries/comm/CommSettings.h"
#include "libraries/comm/ErrorNumbers.h"
#include "platform/RavLog.h"

#include <string>
#include <string_view>

namespace comm {

/**
 * Logs the events of one port in the system log: connected, lost, failed. At most ten lines a minute, and a
 * repeated failure is logged once, so that clicks on a dead device can't fill the log. Not thread-safe: a
 * port uses it under its lock.
 */
class CPortLog {
  public:
    explicit CPortLog(std::string name) : m_name(std::move(name)) {}

    /** Logs an event. The next failure is logged again, even if it repeats the last one. */
    void Note(std::string_view text);

    /** Logs a failure with an error number, unless it repeats the last one. */
    void Failed(std::string_view text, EnError error);

  private:
    void Write(RavLog::EnLogLevel level, const std::string& text);

    std::string m_name;
    EnError m_lastError = ErrorNone;
    Clock::time_point m_minute;
    int m_lines = 0;
    int m_omitted = 0;
};

}  // namespace comm
