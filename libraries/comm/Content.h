#pragma once

#include "libraries/comm/ErrorNumbers.h"

#include <string>
#include <string_view>

namespace comm {

/**
 * Converts the content of a command to the bytes that go out. A pure function; any thread.
 *
 * Text (isText): asciiEncode 0 gives the stored characters, without a copy; 1 one byte for each character
 * U+0000 to U+00FF; 2 GB18030. There are no escapes of any kind.
 *
 * Hexadecimal: tokens, separated by blanks, tabs, line breaks, commas, semicolons, colons and hyphens. A
 * token is a single digit or pairs of digits, in either case. It may begin with 0x, \x or $, or end in h. \x
 * and $ begin a token even without a separator before them.
 *
 * @param storage  takes the bytes when they differ from content; must outlive the use of bytes
 * @param bytes    the result: a view of content or of storage; empty after an error
 * @return 0 or ErrorBadContent. Nothing is ever truncated or padded.
 */
[[nodiscard]] EnError ContentToBytes(std::string_view content, bool isText, int asciiEncode,
                                     std::string& storage, std::string_view& bytes);

/**
 * Appends a UTF-8 text to out as GB18030. @return false when text is invalid UTF-8 or has characters that
 * GB18030 lacks.
 */
[[nodiscard]] bool AppendGb18030(std::string_view text, std::string& out);

}  // namespace comm
