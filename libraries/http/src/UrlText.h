#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <hv/HttpMessage.h>

namespace hv::internal {

/** %XX becomes a byte. Nothing when an escape is invalid. */
std::optional<std::string> PercentDecoded(std::string_view text);

/** Parses "a=1&b=2" into the map, decoded; an earlier value of a key stays. */
void ReadQuery(std::string_view query, QueryParams& params);

}  // namespace hv::internal
