#pragma once

#include <cstddef>
#include <string_view>

/**
 * Maximum depth of nested objects and arrays. The JSON library recurses when it copies and serialises, and
 * overflows a stack of 1 MiB at about 1,000 levels.
 */
inline constexpr std::size_t kMaxJsonDepth = 256;

/**
 * Whether a JSON text is nested deeper than kMaxJsonDepth, by one pass over its bytes. Call it before the
 * parser. It does not check whether the text is valid. Any thread.
 */
bool IsNestedTooDeep(std::string_view text);
