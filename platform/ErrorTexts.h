#pragma once

#include <cstdint>
#include <string>

/**
 * Text of a Windows system error number in UTF-8, with the line end that the system appends to its messages.
 * 0 gives "No error"; a number without a text gives "Failed to get error description (Code: N)".
 */
std::string GetSystemErrorText(std::uint32_t code);

/** As GetSystemErrorText, for a Windows socket error number. */
std::string GetSocketErrorText(std::uint32_t code);
