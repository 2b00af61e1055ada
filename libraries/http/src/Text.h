#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

#include <hv/HttpMessage.h>

namespace hv::internal {

/** ASCII lower case; other bytes stay. */
char LowerCase(char c);
std::string LowerCase(std::string_view text);

/** Whether it is one of A to Z, a to z, 0 to 9. */
bool IsLetterOrDigit(char c);

/** Equality without regard to ASCII case. */
bool EqualsCaseless(std::string_view left, std::string_view right);

/** The text without blanks and tabs at its ends. */
std::string_view Trimmed(std::string_view text);

/** Takes the part before the separator off the front of the text, and the separator. */
std::string_view TakeUntil(std::string_view& text, char separator);

/** %XX becomes a byte. Nothing when an escape is broken. */
std::optional<std::string> PercentDecoded(std::string_view text);

/** Reads "a=1&b=2" into the map, decoded; an earlier value of a key stays. */
void ReadQuery(std::string_view query, QueryParams& params);

/** "Sun, 06 Nov 1994 08:49:37 GMT" (RFC 9110, 5.6.7). */
std::string HttpDate(std::time_t time);

/** The present second as an HTTP date, built once a second and thread. */
const std::string& HttpDateNow();

/** Reads an HTTP date in its preferred form; nothing for other forms. */
std::optional<std::time_t> ParseHttpDate(std::string_view text);

/** Decimal digits only, no sign; nothing when empty, malformed or too large. */
std::optional<std::uint64_t> ParseDecimal(std::string_view text);

/** Reason phrase of a status; empty when unknown. */
std::string_view ReasonOf(int status);

}  // namespace hv::internal
