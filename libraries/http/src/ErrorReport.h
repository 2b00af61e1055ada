#pragma once

#include <string>
#include <string_view>

namespace hv::internal {

/** Sends one line to the system log; without the reason when there is no memory to join them. Any thread. */
void ReportError(std::string_view text, std::string_view reason = {}) noexcept;

/** A client's text as a log may show it: its beginning, without control characters. */
std::string Shown(std::string_view text);

}  // namespace hv::internal
