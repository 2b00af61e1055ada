#include "libraries/http/src/OriginRule.h"

#include "libraries/http/src/Text.h"

namespace hv::internal {

std::string_view HostNameOf(std::string_view authority) {
    if (authority.starts_with('[')) {
        return authority.substr(0, authority.find(']') + 1);
    }
    return authority.substr(0, authority.find(':'));
}

bool IsFromElsewhere(const HttpRequest& request) {
    const auto origin = request.headers.find(std::string_view("Origin"));
    if (origin == request.headers.end()) {
        return false;
    }
    const auto host = request.headers.find(std::string_view("Host"));
    const std::size_t scheme = origin->second.find("://");
    if (host == request.headers.end() || scheme == std::string::npos) {
        return true;
    }
    const std::string_view name = HostNameOf(std::string_view(origin->second).substr(scheme + 3));
    return name.empty() || !EqualsCaseless(name, HostNameOf(host->second));
}

}  // namespace hv::internal
