#pragma once

#include <string_view>

namespace RavLog {

/**
 * Writes on standard error. When nobody takes it for a tenth of a second the rest is thrown away: a terminal
 * that is held must not hold up the logs.
 */
void WriteToStandardError(std::string_view text);

}  // namespace RavLog
