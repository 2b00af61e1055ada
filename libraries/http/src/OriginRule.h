#pragma once

#include <string_view>

#include <hv/HttpMessage.h>

namespace hv::internal {

/** Host name of "name:port" or "[v6]:port", with the brackets, without the port. */
std::string_view HostNameOf(std::string_view authority);

/**
 * Whether a request comes from a page of another host: it carries an Origin that is no URL of the host name
 * in Host (ports are not compared), "null" included. Requests without Origin come from no page.
 */
bool IsFromElsewhere(const HttpRequest& request);

}  // namespace hv::internal
