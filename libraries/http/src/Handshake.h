#pragma once

#include <string_view>

#include <hv/HttpMessage.h>

namespace hv::internal {

/** Whether a header such as "keep-alive, Upgrade" names the token, without regard to case. */
bool HasToken(std::string_view list, std::string_view token);

/**
 * What is wrong with a request that asks for an upgrade to WebSocket (RFC 6455, 4.2.1).
 * @return 0, or the status to refuse it with: 400, or 426 for another version of the protocol than 13
 */
int FaultOfHandshake(const HttpRequest& request);

/**
 * The sub-protocol that the reply names: the first of those that the client offers, or nothing where it
 * offers none. A browser that has offered some takes no reply without one, and messages are the same under
 * any name.
 */
std::string_view ChosenSubprotocol(const HttpRequest& request);

}  // namespace hv::internal
