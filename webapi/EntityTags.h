#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include <hv/HttpMessage.h>

/** The value of a header, also an empty one; nothing when the request does not carry it. */
std::optional<std::string> HeaderOf(const HttpRequest& request, const char* name);

/**
 * Goes through a list of entity tags as If-Match and If-None-Match have it (RFC 9110, 8.8.3 and 13.1).
 * @param matches  asked for each tag, without its quotes, and for "*", until it says yes; isWeak: W/ stood
 * before it
 * @return whether it said yes. What stands behind the first malformed tag is not looked at.
 */
bool AnyEntityTag(std::string_view list,
                  const std::function<bool(std::string_view tag, bool isWeak)>& matches);
