#pragma once

#include <string>
#include <string_view>

/**
 * A wide text of the system as a narrow one.
 *
 * Windows: in the ANSI code page, by WideCharToMultiByte with CP_ACP, no flags and no default character.
 * Linux: in UTF-8; a wide character that is no Unicode scalar value becomes U+FFFD. Any thread.
 */
std::string NarrowText(std::wstring_view text);
