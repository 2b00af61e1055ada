#pragma once

#include <string>
#include <string_view>

#include <hv/HttpMessage.h>

namespace hv::internal {

/** Host name of "name:port" or "[v6]:port", with the brackets, without the port. */
std::string_view HostNameOf(std::string_view authority);

/** First part of this machine's name, in lower case; empty when the system doesn't report it. */
std::string MachineName();

/**
 * Whether a name in Host can only mean this machine: an address, "localhost", a name without dots, the
 * machine's own name with or without a domain, a name under .local, .lan, .internal or .home.arpa, or one
 * that was passed to SetAllowedHosts. Any other name may belong to somebody else, who lets it resolve to this
 * machine. Browsers would then take that person's pages for pages of this server (DNS rebinding). Any thread.
 */
bool IsKnownHost(std::string_view authority);

enum class OriginFault {
    None,
    OtherPage,    ///< the request comes from a page of another host
    UnknownHost,  ///< it used a name that may belong to somebody else
};

/**
 * Checks a request that changes something. A request without Origin comes from no page and is accepted.
 * Origin must be a URL of the host name in Host or in X-Forwarded-Host; ports are not compared. A page
 * elsewhere can't set X-Forwarded-Host, but a proxy that replaces Host does. Host must be known.
 */
OriginFault FaultOfOrigin(const HttpRequest& request);

}  // namespace hv::internal
