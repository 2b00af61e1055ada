#pragma once

#include <string_view>

/**
 * Whether a client accepts gzip, and prefers it to the plain text or has no preference.
 * @param accepted  value of its header Accept-Encoding (RFC 9110, 12.5.3); malformed parts accept nothing
 */
bool TakesGzip(std::string_view accepted);
