#pragma once

#include <string_view>

/**
 * Whether a client takes gzip, and likes it no less than the plain text.
 * @param accepted  value of its header Accept-Encoding (RFC 9110, 12.5.3); what is malformed in it takes
 * nothing
 */
bool TakesGzip(std::string_view accepted);
