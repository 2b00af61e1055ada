#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace hv::internal {

/** "Sun, 06 Nov 1994 08:49:37 GMT" (RFC 9110, 5.6.7). */
std::string HttpDate(std::time_t time);

/** The present second as an HTTP date, built once a second and thread. Valid until the thread asks again. */
std::string_view HttpDateNow();

/** Parses an HTTP date in its preferred form; nothing for other forms. */
std::optional<std::time_t> ParseHttpDate(std::string_view text);

}  // namespace hv::internal
