#pragma once

#include <string_view>

#include <hv/HttpMessage.h>

namespace hv::internal {

/** Whether a header such as "keep-alive, Upgrade" contains the token, ignoring case. */
bool HasToken(std::string_view list, std::string_view token);

/**
 * Checks a request for an upgrade to WebSocket (RFC 6455, 4.2.1).
 * @return 0, or the status to refuse it with: 400, or 426 for another version of the protocol than 13
 */
int FaultOfHandshake(const HttpRequest& request);

/**
 * The sub-protocol for the reply: the first one that the client offers, or nothing if it offers none. A
 * browser that has offered some rejects a reply without one. Messages are the same under any name.
 */
std::string_view ChosenSubprotocol(const HttpRequest& request);

}  // namespace hv::internal
