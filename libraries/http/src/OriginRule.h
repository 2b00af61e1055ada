#pragma once

#include <string>
#include <string_view>

#include <hv/HttpMessage.h>

namespace hv::internal {

/** Host name of "name:port" or "[v6]:port", with the brackets, without the port. */
std::string_view HostNameOf(std::string_view authority);

/** First part of this machine's name, in lower case; empty when the system doesn't tell it. */
std::string MachineName();

/**
 * Whether a name in Host can only be one of this machine: an address, "localhost", a name without dots, the
 * machine's own name with or without a domain, a name under .local, .lan, .internal or .home.arpa, or one
 * that SetAllowedHosts has told. Any other may be a name of somebody else, who lets it lead here: a page of
 * his then counts for browsers as one of this server (DNS rebinding). Any thread.
 */
bool IsKnownHost(std::string_view authority);

enum class OriginFault {
    None,
    OtherPage,    ///< the request comes from a page of another host
    UnknownHost,  ///< it came by a name that may be somebody else's
};

/**
 * What speaks against a request that changes something. Requests without Origin come from no page: nothing.
 * Origin must be a URL of the host name in Host, or in X-Forwarded-Host, which a page elsewhere can't set and
 * a proxy that has replaced Host does; ports are not compared. Host must be known.
 */
OriginFault FaultOfOrigin(const HttpRequest& request);

}  // namespace hv::internal
