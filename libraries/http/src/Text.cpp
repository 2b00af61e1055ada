#include "libraries/http/src/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>

#include <hv/hurl.h>

namespace hv::internal {

namespace {

constexpr std::array<std::string_view, 7> kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array<std::string_view, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

}  // namespace

char LowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

std::string LowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        c = LowerCase(c);
    }
    return lower;
}

bool IsLetterOrDigit(char c) {
    return (c >= '0' && c <= '9') || (LowerCase(c) >= 'a' && LowerCase(c) <= 'z');
}

bool EqualsCaseless(std::string_view left, std::string_view right) {
    return left.size() == right.size() &&
           std::equal(left.begin(), left.end(), right.begin(),
                      [](char a, char b) { return LowerCase(a) == LowerCase(b); });
}

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) {
        text.remove_suffix(1);
    }
    return text;
}

std::string_view TakeUntil(std::string_view& text, char separator) {
    const std::size_t at = text.find(separator);
    const std::string_view part = text.substr(0, at);
    text.remove_prefix(at == std::string_view::npos ? text.size() : at + 1);
    return part;
}

std::optional<std::string> PercentDecoded(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            out += text[i];
            continue;
        }
        unsigned value = 0;
        const char* first = text.data() + i + 1;
        if (i + 2 >= text.size() || std::from_chars(first, first + 2, value, 16).ptr != first + 2) {
            return std::nullopt;
        }
        out += static_cast<char>(value);
        i += 2;
    }
    return out;
}

void ReadQuery(std::string_view query, QueryParams& params) {
    while (!query.empty()) {
        std::string_view value = TakeUntil(query, '&');
        const std::string_view key = TakeUntil(value, '=');
        if (!key.empty()) {
            params.emplace(HUrl::unescape(std::string(key)), HUrl::unescape(std::string(value)));
        }
    }
}

std::string HttpDate(std::time_t time) {
    using std::chrono::floor;
    const auto point = std::chrono::sys_seconds(std::chrono::seconds(time));
    const auto day = floor<std::chrono::days>(point);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(point - day);
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%s, %02u %s %04d %02d:%02d:%02d GMT",
                  kDays[std::chrono::weekday(day).c_encoding()].data(), static_cast<unsigned>(date.day()),
                  kMonths[static_cast<unsigned>(date.month()) - 1].data(), static_cast<int>(date.year()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text.data();
}

const std::string& HttpDateNow() {
    thread_local std::time_t second = -1;
    thread_local std::string text;
    const std::time_t now = std::time(nullptr);
    if (now != second) {
        second = now;
        text = HttpDate(now);
    }
    return text;
}

std::optional<std::time_t> ParseHttpDate(std::string_view text) {
    // "Sun, 06 Nov 1994 08:49:37 GMT"
    if (text.size() != 29 || text.substr(25) != " GMT") {
        return std::nullopt;
    }
    const auto month = std::find(kMonths.begin(), kMonths.end(), text.substr(8, 3));
    const auto day = ParseDecimal(text.substr(5, 2));
    const auto year = ParseDecimal(text.substr(12, 4));
    const auto hour = ParseDecimal(text.substr(17, 2));
    const auto minute = ParseDecimal(text.substr(20, 2));
    const auto second = ParseDecimal(text.substr(23, 2));
    if (month == kMonths.end() || !day || !year || !hour || !minute || !second || *hour > 23 ||
        *minute > 59 || *second > 60) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date(
        std::chrono::year(static_cast<int>(*year)),
        std::chrono::month(static_cast<unsigned>(month - kMonths.begin()) + 1),
        std::chrono::day(static_cast<unsigned>(*day)));
    if (!date.ok()) {
        return std::nullopt;
    }
    const auto seconds = std::chrono::sys_days(date).time_since_epoch() + std::chrono::hours(*hour) +
                         std::chrono::minutes(*minute) + std::chrono::seconds(*second);
    return static_cast<std::time_t>(std::chrono::duration_cast<std::chrono::seconds>(seconds).count());
}

std::optional<std::uint64_t> ParseDecimal(std::string_view text) {
    std::uint64_t value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || result.ec != std::errc() || result.ptr != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

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

}  // namespace hv::internal
