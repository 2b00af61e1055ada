#pragma once

#include <string>
#include <string_view>

namespace hv::internal {

/** Logs one line in the system log; without the reason when there is no memory to join them. Any thread. */
void ReportError(std::string_view text, std::string_view reason = {}) noexcept;

/** A client's text in a form that is safe for a log: its beginning, without control characters. */
std::string Shown(std::string_view text);

}  // namespace hv::internal
