#pragma once

#include <string_view>

namespace hv::internal {

/** Sends one line to the system log; without the reason when there is no memory to join them. Any thread. */
void ReportError(std::string_view text, std::string_view reason = {}) noexcept;

}  // namespace hv::internal
