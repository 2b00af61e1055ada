#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace hv::internal {

/** ASCII lower case; other bytes stay. */
char LowerCase(char c);
std::string LowerCase(std::string_view text);

/** Whether it is one of A to Z, a to z, 0 to 9. */
bool IsLetterOrDigit(char c);

/** Equality, ignoring ASCII case. */
bool EqualsCaseless(std::string_view left, std::string_view right);

/** The text without blanks and tabs at its ends. */
std::string_view Trimmed(std::string_view text);

/**
 * Removes the part before the separator, and the separator, from the front of the text, and returns that
 * part.
 */
std::string_view TakeUntil(std::string_view& text, char separator);

/** Decimal digits only, no sign; nothing when empty, malformed or too large. */
std::optional<std::uint64_t> ParseDecimal(std::string_view text);

}  // namespace hv::internal
