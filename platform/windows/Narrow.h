#pragma once

#include <string>
#include <string_view>

/** The wide form of a text in the process's code page; empty when it can't be converted. */
std::wstring WideFromNarrow(std::string_view text);

/** The wide form of a text in UTF-8; empty when it is invalid UTF-8. */
std::wstring WideFromUtf8(std::string_view text);

/** A wide text as UTF-8. */
std::string Utf8FromWide(std::wstring_view text);
