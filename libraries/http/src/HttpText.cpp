// Names and texts: URLs, paths and socket addresses.
#include "libraries/http/src/IoHandle.h"

#include <array>
#include <charconv>
#include <cstdio>

#include <boost/asio/ip/address.hpp>
#include <hv/hloop.h>
#include <hv/hpath.h>
#include <hv/hsocket.h>
#include <hv/hurl.h>

std::string HUrl::unescape(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned value = 0;
        const char* first = text.data() + i + 1;
        if (text[i] == '%' && i + 2 < text.size() &&
            std::from_chars(first, first + 2, value, 16).ptr == first + 2) {
            out += static_cast<char>(value);
            i += 2;
        } else {
            out += text[i] == '+' ? ' ' : text[i];
        }
    }
    return out;
}

std::string HPath::join(const std::string& dir, const std::string& filename) {
    char separator = '/';
#if defined(_WIN32)
    if (dir.find('\\') != std::string::npos) {
        separator = '\\';
    }
#endif
    if (dir.empty() || dir.back() != separator) {
        return dir + separator + filename;
    }
    return dir + filename;
}

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

struct sockaddr* hio_peeraddr(hio_t* io) {
    return io == nullptr ? nullptr : &io->peer.sa;
}
