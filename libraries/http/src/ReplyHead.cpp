#include "libraries/http/src/ReplyHead.h"

#include "libraries/http/src/HttpDate.h"
#include "libraries/http/src/Text.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace hv::internal {

namespace {

// Reason phrase of a status; empty when unknown.
std::string_view ReasonOf(int status) {
    switch (status) {
        case 200:
            return "OK";
        case 201:
            return "Created";
        case 204:
            return "No Content";
        case 206:
            return "Partial Content";
        case 301:
            return "Moved Permanently";
        case 302:
            return "Found";
        case 304:
            return "Not Modified";
        case 400:
            return "Bad Request";
        case 401:
            return "Unauthorized";
        case 403:
            return "Forbidden";
        case 404:
            return "Not Found";
        case 405:
            return "Method Not Allowed";
        case 412:
            return "Precondition Failed";
        case 413:
            return "Content Too Large";
        case 414:
            return "URI Too Long";
        case 416:
            return "Range Not Satisfiable";
        case 417:
            return "Expectation Failed";
        case 422:
            return "Unprocessable Content";
        case 426:
            return "Upgrade Required";
        case 431:
            return "Request Header Fields Too Large";
        case 500:
            return "Internal Server Error";
        case 501:
            return "Not Implemented";
        case 503:
            return "Service Unavailable";
        default:
            return "";
    }
}

bool IsOwnHeader(std::string_view name) {
    constexpr std::array<std::string_view, 4> names = {"Content-Length", "Connection", "Transfer-Encoding",
                                                       "Date"};
    return std::any_of(names.begin(), names.end(), [&](auto own) { return EqualsCaseless(own, name); });
}

bool FitsOnLine(std::string_view text) {
    return std::none_of(text.begin(), text.end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
}

void AppendNumber(std::string& text, std::uint64_t number) {
    std::array<char, 20> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    text.append(digits.data(), end);
}

}  // namespace

bool MayHaveBody(int status) {
    return status >= 200 && status != 204 && status != 304;
}

void AppendReplyHead(std::string& text, const HttpResponse& response, const ReplyFrame& frame) {
    const int status = response.status_code;
    text.append("HTTP/1.1 ");
    AppendNumber(text, static_cast<unsigned>(status));
    text.append(" ").append(ReasonOf(status)).append("\r\nDate: ").append(HttpDateNow()).append("\r\n");
    for (const auto& [name, value] : response.headers) {
        if (!IsOwnHeader(name) && !name.empty() && FitsOnLine(name) && FitsOnLine(value)) {
            text.append(name).append(": ").append(value).append("\r\n");
        }
    }
    if (MayHaveBody(status)) {
        text.append("Content-Length: ");
        AppendNumber(text, frame.contentLength);
        text.append("\r\n");
    }
    if (frame.close) {
        text.append("Connection: close\r\n");
    } else if (frame.http10) {
        text.append("Connection: keep-alive\r\n");
    }
    text.append("\r\n");
}

}  // namespace hv::internal
