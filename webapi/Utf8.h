#pragma once

#include <string>

/**
 * The text, checked to be UTF-8 (RFC 3629) without a NUL, so that it can name a file.
 * @throw std::range_error when it is not
 */
std::u8string Utf8FromBytes(const std::string& bytes);
