#pragma once

#include <string>

namespace RavLog {

/**
 * The text with each byte of invalid UTF-8 (RFC 3629) written as "\xFF", so that no request can turn a log
 * into what tools take for a binary file. Any thread.
 */
std::string WithBadBytesShown(std::string text);

}  // namespace RavLog
