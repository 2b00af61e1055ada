#include "libraries/http/src/HttpDate.h"

#include "libraries/http/src/Text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

namespace hv::internal {

namespace {

constexpr std::array<std::string_view, 7> kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array<std::string_view, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr std::size_t kDateLength = std::string_view("Sun, 06 Nov 1994 08:49:37 GMT").size();

}  // namespace

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

std::string_view HttpDateNow() {
    thread_local std::time_t second = -1;
    thread_local std::array<char, kDateLength> text;
    const std::time_t now = std::time(nullptr);
    if (now != second) {
        second = now;
        HttpDate(now).copy(text.data(), text.size());
    }
    return {text.data(), text.size()};
}

std::optional<std::time_t> ParseHttpDate(std::string_view text) {
    if (text.size() != kDateLength || text.substr(25) != " GMT") {
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

}  // namespace hv::internal
