#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include <hv/HttpMessage.h>

/** The value of a header, even an empty one; nothing when the request does not carry it. */
std::optional<std::string> HeaderOf(const HttpRequest& request, const char* name);

/**
 * Goes through a list of entity tags in the form of If-Match and If-None-Match (RFC 9110, 8.8.3 and 13.1).
 * @param matches  called for each tag, without its quotes, and for "*", until it returns true; isWeak: the
 * tag has the prefix W/
 * @return whether it returned true. Text after the first malformed tag is ignored.
 */
bool AnyEntityTag(std::string_view list,
                  const std::function<bool(std::string_view tag, bool isWeak)>& matches);

/**
 * Sets the headers of a reply whose state has a tag, so that the client asks again with the tag.
 * @return whether the request names this state: the reply is 304 then (RFC 9110, 13.1.2)
 */
bool IsKnownState(const HttpRequest& request, HttpResponse* response, const std::string& tag);
