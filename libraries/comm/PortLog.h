#pragma once

#include "libraries/comm/CommSettings.h"
#include "platform/RavLog.h"

#include <string>
#include <string_view>

namespace comm {

/**
 * What one port has to say to the system log: connected, lost, failed. Ten lines a minute at most, and a
 * failure that repeats itself is told once, so that clicks on a dead device can't fill the log. Not
 * thread-safe: a port uses it under its lock.
 */
class CPortLog {
  public:
    explicit CPortLog(std::string name) : m_name(std::move(name)) {}

    /** Tells of an event, and makes the next failure worth telling again. */
    void Note(std::string_view text);

    /** Tells of a failure with an error number. */
    void Failed(std::string_view text, int error);

  private:
    void Write(RavLog::EnLogLevel level, const std::string& text);

    std::string m_name;
    int m_lastError = 0;
    Clock::time_point m_minute;
    int m_lines = 0;
    int m_omitted = 0;
};

}  // namespace comm
