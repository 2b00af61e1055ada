#include <algorithm>
#include <cstdio>
#include <string>

#include <boost/asio/ip/address.hpp>
#include <hv/hsocket.h>

const char* sockaddr_str(sockaddr_u* addr, char* buf, int len) {
    if (len <= 0) {
        return buf;
    }
    namespace ip = boost::asio::ip;
    std::string text;
    if (addr->sa.sa_family == AF_INET6) {
        ip::address_v6::bytes_type bytes{};
        std::copy_n(reinterpret_cast<const unsigned char*>(&addr->sin6.sin6_addr), bytes.size(),
                    bytes.begin());
        const ip::address_v6 address(bytes, addr->sin6.sin6_scope_id);
        text = "[" + address.to_string() + "]:" + std::to_string(ntohs(addr->sin6.sin6_port));
    } else if (addr->sa.sa_family == AF_INET) {
        const ip::address_v4 address(ntohl(addr->sin.sin_addr.s_addr));
        text = address.to_string() + ":" + std::to_string(ntohs(addr->sin.sin_port));
    }
    std::snprintf(buf, static_cast<std::size_t>(len), "%s", text.c_str());
    return buf;
}
