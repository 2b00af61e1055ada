#pragma once

#include <string_view>

namespace RavLog {

/**
 * Writes to standard error. When nobody takes the text for a tenth of a second, the rest is discarded: a
 * paused terminal must not block the logs.
 */
void WriteToStandardError(std::string_view text);

}  // namespace RavLog
