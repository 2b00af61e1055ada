#pragma once

#include <cstddef>
#include <string_view>

/**
 * Length, 1 to 4 bytes, of the UTF-8 sequence (RFC 3629) at the beginning of a text; 0 when there is none.
 * Any thread.
 */
std::size_t Utf8SequenceLength(std::string_view text);
