#include "libraries/http/src/Handshake.h"

#include "libraries/http/src/Text.h"

#include <algorithm>

namespace hv::internal {

namespace {

// RFC 9110, 5.6.2.
bool IsToken(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return IsLetterOrDigit(c) || std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos;
    });
}

// 16 bytes in base64: 22 digits and the filling.
bool IsKey(std::string_view text) {
    constexpr std::size_t digits = 22;
    return text.size() == digits + 2 && text.substr(digits) == "==" &&
           std::all_of(text.begin(), text.begin() + digits,
                       [](char c) { return IsLetterOrDigit(c) || c == '+' || c == '/'; });
}

}  // namespace

bool HasToken(std::string_view list, std::string_view token) {
    while (!list.empty()) {
        if (EqualsCaseless(Trimmed(TakeUntil(list, ',')), token)) {
            return true;
        }
    }
    return false;
}

int FaultOfHandshake(const HttpRequest& request) {
    const std::string version = request.GetHeader("Sec-WebSocket-Version");
    if (version.empty() || !IsKey(request.GetHeader("Sec-WebSocket-Key"))) {
        return 400;
    }
    return version == "13" ? 0 : 426;
}

std::string_view ChosenSubprotocol(const HttpRequest& request) {
    const auto offered = request.headers.find(std::string_view("Sec-WebSocket-Protocol"));
    if (offered == request.headers.end()) {
        return {};
    }
    std::string_view list = offered->second;
    const std::string_view first = Trimmed(TakeUntil(list, ','));
    return IsToken(first) ? first : std::string_view();
}

}  // namespace hv::internal
