#pragma once

#include <cstddef>
#include <string_view>

/** Bytes, 1 to 4, of the UTF-8 sequence (RFC 3629) that a text begins with; 0 for none. Any thread. */
std::size_t Utf8SequenceLength(std::string_view text);
