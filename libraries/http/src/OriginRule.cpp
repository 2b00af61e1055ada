#include "libraries/http/src/OriginRule.h"

#include "libraries/http/src/Text.h"
#include "platform/Mutex.h"
#include "platform/WebOrigins.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <set>
#include <string>

#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/host_name.hpp>

namespace hv::internal {

namespace {

CMutex g_mutex;

std::set<std::string>& AllowedHosts() REQUIRES_LOCK(g_mutex) {
    static std::set<std::string> names;
    return names;
}

// The form in which names are compared.
std::string PlainName(std::string_view authority) {
    std::string name = LowerCase(HostNameOf(Trimmed(authority)));
    if (name.ends_with('.')) {
        name.pop_back();
    }
    return name;
}

bool IsAddress(std::string_view name) {
    boost::system::error_code error;
    if (name.starts_with('[')) {
        boost::asio::ip::make_address_v6(std::string(name.substr(1, name.size() - 2)), error);
    } else {
        boost::asio::ip::make_address_v4(std::string(name), error);
        // Some systems read shorter forms as well, such as "10.0.0".
        return !error && std::count(name.begin(), name.end(), '.') == 3;
    }
    return !error;
}

bool IsPrivateName(std::string_view name) {
    constexpr std::array<std::string_view, 4> suffixes = {".local", ".lan", ".internal", ".home.arpa"};
    return std::any_of(suffixes.begin(), suffixes.end(), [&](std::string_view suffix) {
        return name.size() > suffix.size() && name.ends_with(suffix);
    });
}

bool IsOwnName(std::string_view name) {
    const std::string own = MachineName();
    return !own.empty() && name.substr(0, name.find('.')) == own;
}

bool IsAllowed(const std::string& name) {
    const CLock lock(g_mutex);
    return AllowedHosts().contains(name);
}

}  // namespace

std::string_view HostNameOf(std::string_view authority) {
    if (authority.starts_with('[')) {
        return authority.substr(0, authority.find(']') + 1);
    }
    return authority.substr(0, authority.find(':'));
}

std::string MachineName() {
    boost::system::error_code error;
    const std::string name = PlainName(boost::asio::ip::host_name(error));
    return name.substr(0, name.find('.'));
}

bool IsKnownHost(std::string_view authority) {
    const std::string name = PlainName(authority);
    const bool isPlain = !name.starts_with('[') && name.find('.') == std::string::npos;  // also "localhost"
    return isPlain || IsAddress(name) || IsPrivateName(name) || IsAllowed(name) || IsOwnName(name);
}

OriginFault FaultOfOrigin(const HttpRequest& request) {
    const auto origin = request.headers.find(std::string_view("Origin"));
    if (origin == request.headers.end()) {
        return OriginFault::None;
    }
    const std::string host = request.GetHeader("Host");
    const std::size_t scheme = origin->second.find("://");
    if (host.empty() || scheme == std::string::npos) {
        return OriginFault::OtherPage;
    }
    const std::string page = PlainName(std::string_view(origin->second).substr(scheme + 3));
    std::string forwarded = request.GetHeader("X-Forwarded-Host");
    forwarded.resize(std::min(forwarded.find(','), forwarded.size()));  // the first is what the browser asked
    if (page.empty() || (page != PlainName(host) && page != PlainName(forwarded))) {
        return OriginFault::OtherPage;
    }
    return IsKnownHost(host) ? OriginFault::None : OriginFault::UnknownHost;
}

}  // namespace hv::internal

void SetAllowedHosts(const std::vector<std::string>& names) {
    using namespace hv::internal;
    std::set<std::string> allowed;
    std::transform(names.begin(), names.end(), std::inserter(allowed, allowed.end()),
                   [](const std::string& name) { return PlainName(name); });
    const CLock lock(g_mutex);
    AllowedHosts() = std::move(allowed);
}
