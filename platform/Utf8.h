#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/**
 * Length, 1 to 4 bytes, of the UTF-8 sequence (RFC 3629) at the beginning of a text; 0 when there is none.
 * Any thread.
 */
std::size_t Utf8SequenceLength(std::string_view text);

/**
 * Takes the first character off a text in UTF-8, which must not be empty. A byte that begins no sequence is
 * taken alone, as U+FFFD. Any thread.
 */
char32_t TakeUtf8Character(std::string_view& text);

/**
 * The text, checked to be UTF-8 (RFC 3629) without a NUL, so that it can name a file. Any thread.
 * @throw std::range_error when it is not
 */
std::u8string Utf8FromBytes(const std::string& bytes);
