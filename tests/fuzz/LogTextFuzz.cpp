// Any text in a log: what is written is UTF-8, and what was UTF-8 already stays as it is.
#include "libraries/log/RecordText.h"
#include "server/LogText.h"
#include "tests/fuzz/FuzzTarget.h"
#include "webapi/ClientErrorLog.h"

#include <sstream>

#include <nlohmann/json.hpp>

namespace {

bool IsUtf8(const std::string& text) {
    try {
        return !nlohmann::json(text).dump().empty();
    } catch (const nlohmann::json::type_error&) {
        return false;
    }
}

}  // namespace

FUZZ_TARGET(log_text) {
    const std::string text = FormatLogText(bytes, static_cast<int>(bytes.size()));
    Require(text == "[" + std::string(bytes) + "] [" + std::to_string(bytes.size()) + "] ");
    const std::string shown = RavLog::WithBadBytesShown(text);
    Require(IsUtf8(shown) && (shown == text) == IsUtf8(text));
    Require(RavLog::WithBadBytesShown(shown) == shown);
    Require(shown.size() <= 4 * text.size());

    std::ostringstream line;
    AppendClientField(line, "key", nlohmann::json::parse(bytes, nullptr, false));
    const std::string sanitized = SanitizeLogLine(line.str() + std::string(bytes));
    Require(sanitized.find_first_of("\t\r\n") == std::string::npos);
}
