#pragma once

#include <ostream>
#include <string>

#include <nlohmann/json.hpp>

/**
 * Appends " key=value" of a report: a text as it is, any other value as JSON; nothing when it is absent or
 * null.
 */
void AppendClientField(std::ostream& line, const char* key, const nlohmann::json& report);

/** The text with each tab, line feed and carriage return replaced by a blank, so that it fits on one line. */
std::string SanitizeLogLine(const std::string& text);

/**
 * Appends a record to ClientError.log in the user data folder: local time, the sanitised line, CR LF. The
 * file is open only for that long. Without a folder or a line there is no record; a failure is not reported.
 * Any thread; records never mix.
 */
void AppendClientErrorLog(const std::string& line);
