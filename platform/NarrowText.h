#pragma once

#include <string>
#include <string_view>

/**
 * Converts a wide text of the system to a narrow one.
 *
 * Windows: to the ANSI code page, by WideCharToMultiByte with CP_ACP, no flags and no default character.
 * Linux: to UTF-8; a wide character that is not a Unicode scalar value becomes U+FFFD. Any thread.
 */
std::string NarrowText(std::wstring_view text);
