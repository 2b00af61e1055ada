#pragma once

#include <cstddef>
#include <string_view>

/**
 * Objects and arrays may be nested as deep as this. The JSON library recurses when it copies and serialises;
 * on a stack of 1 MiB it dies at about 1,000 levels.
 */
inline constexpr std::size_t kMaxJsonDepth = 256;

/**
 * Tells whether a JSON text is nested deeper than kMaxJsonDepth, by one pass over its bytes. Meant to come
 * before the parser; says nothing about whether the text is valid. Any thread.
 */
bool IsNestedTooDeep(std::string_view text);
